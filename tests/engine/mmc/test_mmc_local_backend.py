"""The local backend against a real process that speaks llama-server's protocol."""

import json
import os
import re
import signal
import threading
import time
from pathlib import Path

import numpy as np
import pytest
from processes import wait_until
from release_archives import executable
from zelvoran_anpr.mmc import MmcError, create_backend
from zelvoran_anpr.mmc.serve import local, supervisor


@pytest.fixture
def steer(monkeypatch):
    """Set how the process behaves from its next start on."""
    return lambda **how: monkeypatch.setenv("LLAMA_DOUBLE", json.dumps(how))


@pytest.fixture
def config(home, tmp_path) -> dict:
    binary = tmp_path / "llama-server"
    binary.write_bytes(executable())
    binary.chmod(0o755)
    for name in ("llm", "mmproj"):
        (tmp_path / name).write_bytes(b"GGUF")
    local = {"server_bin": str(binary)} | {n: str(tmp_path / n) for n in ("llm", "mmproj")}
    return {"backend": "local", "local": {**local, "start_timeout": 20, "request_timeout": 10}}


@pytest.fixture
def make(config, tmp_path, monkeypatch):
    """Build the backend; every one that was built is stopped afterwards."""
    monkeypatch.setattr(supervisor, "_FIRST_BACKOFF", 0.05)
    built = []

    def build(**local):
        merged = {**config, "local": {**config["local"], **local}}
        backend = create_backend(merged, tmp_path / "data")
        built.append(backend)
        return backend

    yield build
    for backend in built:
        backend.stop()


def photo(color, height=40, width=60) -> np.ndarray:
    return np.full((height, width, 3), color, dtype=np.uint8)


def processes(marker: str) -> list[int]:
    """Pids whose command line holds `marker`."""
    found = []
    for entry in Path("/proc").glob("[0-9]*/cmdline"):
        try:
            if marker.encode() in entry.read_bytes():
                found.append(int(entry.parent.name))
        except OSError:
            continue
    return [pid for pid in found if pid != os.getpid()]


def server_pid(config) -> int:
    """The double itself, not the tether that holds it."""
    both = processes(config["local"]["server_bin"])
    return next(p for p in both if b"tether.py" not in Path(f"/proc/{p}/cmdline").read_bytes())


def test_a_vehicle_is_recognised_from_its_own_picture(make):
    backend = make()
    backend.start()
    red = backend.recognise(photo((250, 5, 5)))
    assert red == {"make": "Double", "model": "60x40", "color": "red"}
    assert backend.recognise(photo((5, 5, 250)))["color"] == "blue"
    assert backend.name == "local" and backend.available()
    assert backend.status() == {
        "available": True,
        "backend": "local",
        "mmc_calls_today": 2,
        "mmc_daily_limit": "unlimited",
        "mmc_remaining": "unlimited",
    }


def test_a_large_picture_is_made_smaller(make):
    backend = make()
    backend.start()
    assert backend.recognise(photo((0, 255, 0), 3000, 1500))["model"] == "384x768"


def test_start_waits_until_the_model_is_loaded(make, steer):
    steer(load=0.5)
    backend = make()
    backend.start()
    assert backend.recognise(photo((255, 255, 255)))["color"] == "white"


def test_the_key_is_not_on_the_command_line_and_is_needed(make, config):
    import http.client

    backend = make()
    backend.start()
    line = Path(f"/proc/{server_pid(config)}/cmdline").read_bytes().decode().split("\0")
    assert "--api-key" not in line and backend._key not in " ".join(line)
    assert line[line.index("--host") + 1] == "127.0.0.1"
    connection = http.client.HTTPConnection("127.0.0.1", backend._supervisor.port())
    connection.request("POST", "/v1/chat/completions", b"{}", {"Authorization": "Bearer wrong"})
    assert connection.getresponse().status == 401
    connection.close()


def test_a_start_that_fails_tells_the_servers_last_words(make, steer):
    steer(fail="noise\nerror: unable to load model\nbye")
    backend = make()
    with pytest.raises(MmcError, match="did not start: error: unable to load model"):
        backend.start()
    assert backend.available() is False
    assert "unable to load model" in backend.status()["error"]


def test_a_start_that_takes_too_long_is_given_up(make, steer, config):
    steer(load=60)
    with pytest.raises(MmcError, match="did not start: not ready within 1 s"):
        make(start_timeout=1).start()
    assert processes(config["local"]["server_bin"]) == []


def test_a_taken_port_is_tried_again(make, steer, monkeypatch):
    from zelvoran_anpr.mmc.serve import llama_process

    real, ports = llama_process.free_port, []

    def first_taken() -> int:
        ports.append(taken if not ports else real())
        return ports[-1]

    import socket

    with socket.socket() as holder:
        holder.bind(("127.0.0.1", 0))
        holder.listen()
        taken = holder.getsockname()[1]
        monkeypatch.setattr(llama_process, "free_port", first_taken)
        monkeypatch.setattr(llama_process, "_PROBE_SECONDS", 0.2)
        backend = make()
        backend.start()
    assert len(ports) == 2 and backend._supervisor.port() == ports[1]


def test_without_model_or_binary_the_set_up_is_named(make, home, monkeypatch):
    monkeypatch.setenv("PATH", "/nonexistent")
    monkeypatch.setattr(local, "MODEL_DIR", home / "models")
    monkeypatch.setattr(local, "BIN_DIR", home / "llama-server")
    with pytest.raises(MmcError, match="model is not in .* Run: zv-anpr mmc-setup"):
        make(llm=None, mmproj=None).start()
    with pytest.raises(MmcError, match="llama-server is not installed. Run: zv-anpr mmc-setup"):
        make(server_bin="/absent").start()
    with pytest.raises(MmcError, match="mmc.local.llm and mmproj go together"):
        make(llm=None).start()


def test_stop_ends_the_process_and_start_begins_anew(make, config):
    backend = make()
    backend.start()
    pids = processes(config["local"]["server_bin"])
    assert len(pids) == 2
    backend.stop()
    backend.stop()
    assert processes(config["local"]["server_bin"]) == []
    assert backend.available() is False
    with pytest.raises(MmcError, match="not running"):
        backend.recognise(photo((0, 0, 0)))
    backend.start()
    assert backend.recognise(photo((250, 0, 0)))["color"] == "red"


def test_stop_waits_for_the_request_under_way(make, steer):
    steer(slow=0.6)
    backend = make()
    backend.start()
    answers = []
    asking = threading.Thread(target=lambda: answers.append(backend.recognise(photo((250, 0, 0)))))
    asking.start()
    wait_until(backend._gate.busy)
    backend.stop()
    asking.join()
    assert answers[0]["color"] == "red"


def test_many_threads_share_it(make):
    backend = make()
    backend.start()
    answers: dict[int, dict] = {}

    def ask(width: int) -> None:
        answers[width] = backend.recognise(photo((0, 0, 250), 50, width))

    threads = [threading.Thread(target=ask, args=(w,)) for w in range(60, 76)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert {w: a["model"] for w, a in answers.items()} == {w: f"{w}x50" for w in range(60, 76)}
    assert backend.status()["mmc_calls_today"] == 16


def test_a_crash_is_told_and_cured(make, steer, tmp_path, config):
    steer(crash=str(tmp_path / "crash"))
    backend = make()
    backend.start()
    (tmp_path / "crash").touch()
    with pytest.raises(MmcError, match="llama-server broke off"):
        backend.recognise(photo((250, 0, 0)))
    (tmp_path / "crash").unlink()
    wait_until(lambda: not backend.available() or len(processes(config["local"]["server_bin"])) > 1)
    wait_until(backend.available)
    wait_until(lambda: backend.status().get("error") is None)
    assert backend.recognise(photo((250, 0, 0)))["color"] == "red"


def test_a_killed_tether_takes_the_server_along_and_both_come_back(make, config):
    backend = make()
    backend.start()
    first = set(processes(config["local"]["server_bin"]))
    os.kill(backend._supervisor._process._child.pid, signal.SIGKILL)
    wait_until(lambda: not first & set(processes(config["local"]["server_bin"])))
    wait_until(backend.available)
    assert not first & set(processes(config["local"]["server_bin"]))


def test_a_server_that_hangs_is_replaced(make, steer, monkeypatch, tmp_path, config):
    from zelvoran_anpr.mmc.serve import llama_process

    monkeypatch.setattr(supervisor, "_CHECK_SECONDS", 0.05)
    monkeypatch.setattr(llama_process, "_PROBE_SECONDS", 0.3)
    steer(hang=str(tmp_path / "hang"))
    backend = make()
    backend.start()
    first = server_pid(config)
    (tmp_path / "hang").touch()
    wait_until(lambda: not backend.available())
    (tmp_path / "hang").unlink()
    wait_until(backend.available)
    assert server_pid(config) != first


def test_repeated_failures_keep_being_tried(make, steer, config):
    backend = make()
    backend.start()
    steer(fail="error: out of memory")
    os.kill(server_pid(config), signal.SIGKILL)
    wait_until(lambda: "out of memory" in backend.status().get("error", ""))
    steer()
    wait_until(backend.available)


def test_it_dies_with_a_server_that_is_killed_hard(run, config, home):
    code = (
        "import json, os, time\nfrom zelvoran_anpr.mmc import create_backend\n"
        "backend = create_backend(json.loads(os.environ['MMC']), None)\nbackend.start()\n"
        "print('up', flush=True)\ntime.sleep(60)"
    )
    child = run(code, env={**os.environ, "MMC": json.dumps(config)})
    assert child.stdout.readline() == "up\n"
    assert len(processes(config["local"]["server_bin"])) == 2
    child.kill()
    wait_until(lambda: processes(config["local"]["server_bin"]) == [])


def test_it_dies_with_a_server_that_just_ends(run, config):
    code = (
        "from zelvoran_anpr.mmc import create_backend\n"
        f"backend = create_backend({config!r}, None)\nbackend.start()\n"
    )
    child = run(code)
    _, errors = child.communicate(timeout=60)
    assert (child.returncode, errors) == (0, "")
    wait_until(lambda: processes(config["local"]["server_bin"]) == [])


def test_the_log_is_kept_and_does_not_grow_for_ever(make, tmp_path, monkeypatch):
    from zelvoran_anpr.mmc.serve import llama_process

    log = tmp_path / "data" / "logs" / "llama-server.log"
    backend = make()
    backend.start()
    wait_until(lambda: re.search("server is listening", log.read_text()))
    backend.stop()
    monkeypatch.setattr(llama_process, "_LOG_KEPT_BYTES", 10)
    backend.start()
    assert log.with_name("llama-server.log.1").exists()


@pytest.mark.parametrize(
    ("content", "expected"),
    [
        ('{"make": " BMW\\n", "model": "unknown", "color": "N/A"}', ("BMW", "", "")),
        ('{"make": null, "model": 3, "color": "red", "extra": 1}', ("", "", "red")),
        (
            '{"make": "\\u0160koda\\u0000 x", "model": "' + "m" * 99 + '"}',
            ("Škoda x", "m" * 40, ""),
        ),
    ],
)
def test_what_the_model_says_is_cleaned(make, steer, content, expected):
    steer(content=content)
    backend = make()
    backend.start()
    assert tuple(backend.recognise(photo((0, 0, 0))).values()) == expected


@pytest.mark.parametrize("content", ["no JSON", '{"make": "BM', "[]", '"red"'])
def test_an_answer_that_is_none_is_told(make, steer, content):
    steer(content=content)
    backend = make()
    backend.start()
    with pytest.raises(MmcError, match="answer"):
        backend.recognise(photo((0, 0, 0)))


def test_a_refused_request_is_told(make, monkeypatch):
    monkeypatch.setattr(local, "chat_request", lambda jpeg: {"messages": []})
    backend = make()
    backend.start()
    with pytest.raises(MmcError, match="llama-server answered 400: IndexError"):
        backend.recognise(photo((0, 0, 0)))


def test_a_slow_answer_is_given_up(make, steer):
    steer(slow=30)
    backend = make(request_timeout=1)
    backend.start()
    started = time.monotonic()
    with pytest.raises(MmcError, match="it stopped answering"):
        backend.recognise(photo((0, 0, 0)))
    assert time.monotonic() - started < 15


def test_proxies_are_not_asked_for_loopback(make, monkeypatch):
    monkeypatch.setenv("http_proxy", "http://127.0.0.1:1")
    backend = make()
    backend.start()
    assert backend.recognise(photo((250, 0, 0)))["color"] == "red"


def test_a_log_that_cannot_be_written_stops_no_start(config, tmp_path):
    (tmp_path / "file").write_text("in the way")
    backend = create_backend(config, tmp_path / "file")
    try:
        backend.start()
        assert backend.recognise(photo((250, 0, 0)))["color"] == "red"
    finally:
        backend.stop()
