"""The local backend with a real llama-server and a tiny real model.

Runs where ZELVORAN_TEST_LLAMA_SERVER names an executable; build_llama_server.sh makes one.
"""

import http.client
import json
import os
import socket
from pathlib import Path

import numpy as np
import pytest

_BINARY = os.environ.get("ZELVORAN_TEST_LLAMA_SERVER")
if not _BINARY:
    pytest.skip("ZELVORAN_TEST_LLAMA_SERVER names no llama-server", allow_module_level=True)
pytest.importorskip("gguf")

from zelvoran_anpr.mmc import MmcError, create_backend  # noqa: E402
from zelvoran_anpr.mmc.serve import llama_process, supervisor  # noqa: E402
from zelvoran_anpr.mmc.serve.vehicle import COLORS, chat_request  # noqa: E402


@pytest.fixture(scope="module")
def model(tmp_path_factory) -> dict[str, str]:
    from tiny_vision_model import write_language_model, write_projector

    folder = tmp_path_factory.mktemp("model")
    write_language_model(folder / "llm.gguf")
    write_projector(folder / "mmproj.gguf")
    return {"llm": str(folder / "llm.gguf"), "mmproj": str(folder / "mmproj.gguf")}


@pytest.fixture
def make(home, model, tmp_path):
    built = []

    def build(**local):
        section = {"server_bin": _BINARY, "threads": 2, **model, **local}
        built.append(create_backend({"backend": "local", "local": section}, tmp_path))
        return built[-1]

    yield build
    for backend in built:
        backend.stop()


def photo(color, height=90, width=120) -> np.ndarray:
    return np.full((height, width, 3), color, dtype=np.uint8)


def test_it_answers_by_the_schema_and_looks_at_the_picture(make):
    backend = make()
    backend.start()
    answers = [backend.recognise(photo(c)) for c in ((250, 0, 0), (0, 0, 250), (250, 0, 0))]
    for answer in answers:
        assert list(answer) == ["make", "model", "color"]
        assert answer["color"] in (*COLORS, "")
        assert 0 < len(answer["make"]) <= 40
    assert answers[0] == answers[2] != answers[1]


def test_a_large_photo_fits_the_context(make):
    backend = make()
    backend.start()
    assert backend.recognise(photo((9, 90, 200), 3000, 4000))["make"]


def test_the_key_is_demanded(make):
    backend = make()
    backend.start()
    connection = http.client.HTTPConnection("127.0.0.1", backend._supervisor.port(), timeout=10)
    body = json.dumps(chat_request(b"")).encode()
    connection.request("POST", "/v1/chat/completions", body, {"Authorization": "Bearer wrong"})
    assert connection.getresponse().status == 401
    connection.close()


def test_a_picture_that_is_none_is_refused_in_words(make, monkeypatch):
    from zelvoran_anpr.mmc.serve import local

    monkeypatch.setattr(local, "jpeg_of", lambda *_: b"no picture")
    backend = make()
    backend.start()
    with pytest.raises(MmcError, match="llama-server answered [45]0"):
        backend.recognise(photo((0, 0, 0)))


def test_a_model_that_is_none_is_named(make, tmp_path):
    bad = tmp_path / "bad.gguf"
    bad.write_bytes(b"GGUF and nothing more")
    with pytest.raises(MmcError, match="did not start: .*(?i:fail|error)"):
        make(llm=str(bad)).start()


def test_a_taken_port_is_tried_again(make, monkeypatch):
    ports = []
    real = llama_process.free_port
    with socket.socket() as holder:
        holder.bind(("127.0.0.1", 0))
        holder.listen()
        taken = holder.getsockname()[1]

        def first_taken() -> int:
            ports.append(real() if ports else taken)
            return ports[-1]

        monkeypatch.setattr(llama_process, "free_port", first_taken)
        monkeypatch.setattr(llama_process, "_PROBE_SECONDS", 0.2)
        backend = make()
        backend.start()
    assert len(ports) == 2 and backend.available()


def test_a_killed_server_comes_back(make, monkeypatch):
    from processes import wait_until

    monkeypatch.setattr(supervisor, "_FIRST_BACKOFF", 0.05)
    backend = make()
    backend.start()
    tether = backend._supervisor._process._child.pid
    [server] = Path(f"/proc/{tether}/task/{tether}/children").read_text().split()
    os.kill(int(server), 9)
    wait_until(lambda: not Path(f"/proc/{tether}/exe").exists())
    wait_until(backend.available, 60)
    assert backend.recognise(photo((250, 0, 0)))["make"]


def test_a_set_up_accepts_it(local, tmp_path, monkeypatch):
    monkeypatch.setenv("ZELVORAN_LLAMA_SERVER", _BINARY)
    assert local._server_bin_runs(local.find_server_bin(None))
    assert local.download_server_bin() == {
        "variant": "own",
        "path": _BINARY,
        "note": "named by ZELVORAN_LLAMA_SERVER",
    }
