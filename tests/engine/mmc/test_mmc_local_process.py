"""The life of the local backend's process: start, crash, hang, end, and its log."""

import json
import os
import re
import signal

import pytest
from local_servers import photo, processes, server_pid
from processes import wait_until
from zelvoran_anpr.mmc import MmcError, create_backend
from zelvoran_anpr.mmc.serve import local, supervisor


def test_start_waits_until_the_model_is_loaded(make_local, steer):
    steer(load=0.5)
    backend = make_local()
    backend.start()
    assert backend.recognise(photo((255, 255, 255)))["color"] == "white"


def test_a_start_that_fails_tells_the_servers_last_words(make_local, steer):
    steer(fail="noise\nerror: unable to load model\nbye")
    backend = make_local()
    with pytest.raises(MmcError, match="did not start: error: unable to load model"):
        backend.start()
    assert backend.available() is False
    assert "unable to load model" in backend.status()["error"]


def test_a_start_that_takes_too_long_is_given_up(make_local, steer, local_config):
    steer(load=60)
    with pytest.raises(MmcError, match="did not start: not ready within 1 s"):
        make_local(start_timeout=1).start()
    assert processes(local_config["local"]["server_bin"]) == []


def test_a_taken_port_is_tried_again(make_local, steer, monkeypatch):
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
        backend = make_local()
        backend.start()
    assert len(ports) == 2 and backend._supervisor.port() == ports[1]


def test_without_model_or_binary_the_set_up_is_named(make_local, home, monkeypatch):
    monkeypatch.setenv("PATH", "/nonexistent")
    monkeypatch.setattr(local, "MODEL_DIR", home / "models")
    monkeypatch.setattr(local, "BIN_DIR", home / "llama-server")
    with pytest.raises(MmcError, match="model is not in .* Run: zv-anpr mmc-setup"):
        make_local(llm=None, mmproj=None).start()
    with pytest.raises(MmcError, match="llama-server is not installed. Run: zv-anpr mmc-setup"):
        make_local(server_bin="/absent").start()
    with pytest.raises(MmcError, match="mmc.local.llm and mmproj go together"):
        make_local(llm=None).start()


def test_stop_ends_the_process_and_start_begins_anew(make_local, local_config):
    backend = make_local()
    backend.start()
    pids = processes(local_config["local"]["server_bin"])
    assert len(pids) == 2
    backend.stop()
    backend.stop()
    assert processes(local_config["local"]["server_bin"]) == []
    assert backend.available() is False
    with pytest.raises(MmcError, match="not running"):
        backend.recognise(photo((0, 0, 0)))
    backend.start()
    assert backend.recognise(photo((250, 0, 0)))["color"] == "red"


def test_a_crash_is_told_and_cured(make_local, steer, tmp_path, local_config):
    steer(crash=str(tmp_path / "crash"))
    backend = make_local()
    backend.start()
    (tmp_path / "crash").touch()
    with pytest.raises(MmcError, match="llama-server broke off"):
        backend.recognise(photo((250, 0, 0)))
    (tmp_path / "crash").unlink()
    wait_until(
        lambda: not backend.available() or len(processes(local_config["local"]["server_bin"])) > 1
    )
    wait_until(backend.available)
    wait_until(lambda: backend.status().get("error") is None)
    assert backend.recognise(photo((250, 0, 0)))["color"] == "red"


def test_a_killed_tether_takes_the_server_along_and_both_come_back(make_local, local_config):
    backend = make_local()
    backend.start()
    first = set(processes(local_config["local"]["server_bin"]))
    os.kill(backend._supervisor._process._child.pid, signal.SIGKILL)
    wait_until(lambda: not first & set(processes(local_config["local"]["server_bin"])))
    wait_until(backend.available)
    assert not first & set(processes(local_config["local"]["server_bin"]))


def test_a_server_that_hangs_is_replaced(make_local, steer, monkeypatch, tmp_path, local_config):
    from zelvoran_anpr.mmc.serve import llama_process

    monkeypatch.setattr(supervisor, "_CHECK_SECONDS", 0.05)
    monkeypatch.setattr(llama_process, "_PROBE_SECONDS", 0.3)
    steer(hang=str(tmp_path / "hang"))
    backend = make_local()
    backend.start()
    first = server_pid(local_config)
    (tmp_path / "hang").touch()
    wait_until(lambda: not backend.available())
    (tmp_path / "hang").unlink()
    wait_until(backend.available)
    assert server_pid(local_config) != first


def test_repeated_failures_keep_being_tried(make_local, steer, local_config):
    backend = make_local()
    backend.start()
    steer(fail="error: out of memory")
    os.kill(server_pid(local_config), signal.SIGKILL)
    wait_until(lambda: "out of memory" in backend.status().get("error", ""))
    steer()
    wait_until(backend.available)


def test_it_dies_with_a_server_that_is_killed_hard(run, local_config, home):
    code = (
        "import json, os, time\nfrom zelvoran_anpr.mmc import create_backend\n"
        "backend = create_backend(json.loads(os.environ['MMC']), None)\nbackend.start()\n"
        "print('up', flush=True)\ntime.sleep(60)"
    )
    child = run(code, env={**os.environ, "MMC": json.dumps(local_config)})
    assert child.stdout.readline() == "up\n"
    assert len(processes(local_config["local"]["server_bin"])) == 2
    child.kill()
    wait_until(lambda: processes(local_config["local"]["server_bin"]) == [])


def test_it_dies_with_a_server_that_just_ends(run, local_config):
    code = (
        "from zelvoran_anpr.mmc import create_backend\n"
        f"backend = create_backend({local_config!r}, None)\nbackend.start()\n"
    )
    child = run(code)
    _, errors = child.communicate(timeout=60)
    assert (child.returncode, errors) == (0, "")
    wait_until(lambda: processes(local_config["local"]["server_bin"]) == [])


def test_the_log_is_kept_and_does_not_grow_for_ever(make_local, tmp_path, monkeypatch):
    from zelvoran_anpr.mmc.serve import llama_process

    log = tmp_path / "data" / "logs" / "llama-server.log"
    backend = make_local()
    backend.start()
    wait_until(lambda: re.search("server is listening", log.read_text()))
    backend.stop()
    monkeypatch.setattr(llama_process, "_LOG_KEPT_BYTES", 10)
    backend.start()
    assert log.with_name("llama-server.log.1").exists()


def test_a_log_that_cannot_be_written_stops_no_start(local_config, tmp_path):
    (tmp_path / "file").write_text("in the way")
    backend = create_backend(local_config, tmp_path / "file")
    try:
        backend.start()
        assert backend.recognise(photo((250, 0, 0)))["color"] == "red"
    finally:
        backend.stop()
