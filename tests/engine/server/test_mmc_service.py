"""Make, model and colour through the server, from a service that this test runs."""

import contextlib
import json
import socket
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

import httpx
import pytest
from conftest import upload
from processes import free_port, wait_until


class Service(ThreadingHTTPServer):
    """Answers like a recognition service; `answer` is the status and body of what comes next."""

    daemon_threads = True

    def __init__(self) -> None:
        super().__init__(("127.0.0.1", 0), _Handler)
        self.answer = (200, {"make": "Renault", "model": "Duster", "color": "silver"})
        self.pictures: list[bytes] = []
        self.awake = threading.Event()
        self.awake.set()
        self.url = f"http://127.0.0.1:{self.server_port}/recognise"


class _Handler(BaseHTTPRequestHandler):
    def do_HEAD(self):
        self._send(200, b"")

    def do_POST(self):
        self.server.pictures.append(self.rfile.read(int(self.headers["Content-Length"])))
        self.server.awake.wait()
        status, body = self.server.answer
        self._send(status, json.dumps(body).encode())

    def _send(self, status: int, body: bytes):
        self.send_response(status)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_):
        pass


@pytest.fixture
def service():
    made = Service()
    threading.Thread(target=made.serve_forever, daemon=True).start()
    yield made
    made.awake.set()
    made.shutdown()
    made.server_close()


@pytest.fixture
def client(home, service):
    home.configure(mmc={"cloud": {"url": service.url, "daily_limit": 5}})
    with home.start(threads=1).client() as made:
        wait_until(lambda: made.get("/api/health").json()["mmc_available"])
        yield made


def test_each_plate_is_told_with_its_vehicle_and_the_quota_goes_down(client, service, plate_photo):
    plate = upload(client, plate_photo, "/api/anpr/mmc").json()["results"][0]
    assert (plate["mmc_make"], plate["mmc_model"], plate["mmc_color"]) == (
        "Renault", "Duster", "silver",
    )  # fmt: skip
    assert service.pictures[0].startswith(b"\xff\xd8")
    assert client.get("/api/mmc/status").json() == {
        "available": True, "backend": "cloud",
        "mmc_calls_today": 1, "mmc_daily_limit": 5, "mmc_remaining": 4,
    }  # fmt: skip


def test_without_being_asked_nothing_is_sent(client, service, plate_photo):
    plate = upload(client, plate_photo).json()["results"][0]
    assert plate["mmc_make"] == ""
    assert service.pictures == []


def test_a_service_that_fails_costs_no_plate(client, service, plate_photo):
    service.answer = (500, {})
    answer = upload(client, plate_photo, "/api/anpr/mmc")
    assert answer.status_code == 200
    assert answer.json()["results"][0]["mmc_make"] == ""
    assert "answered 500" in answer.json()["mmc_error"]


def test_a_change_that_fails_keeps_the_backend_and_a_later_one_reads_the_new_settings(
    home, client, service, plate_photo
):
    failed = client.put("/api/mmc/backend", json={"backend": "local"}).json()
    assert (failed["success"], failed["backend"]) == (False, "cloud")
    assert client.get("/api/mmc/status").json()["available"] is True
    home.configure(mmc={"cloud": {"url": f"http://127.0.0.1:{free_port()}/"}})
    assert client.put("/api/mmc/backend", json={"backend": "cloud"}).json()["success"] is False
    home.configure(mmc={"cloud": {"url": service.url, "daily_limit": 0}})
    changed = client.put("/api/mmc/backend", json={"backend": "Cloud"}).json()
    assert changed == {"success": True, "backend": "cloud", "previous_backend": "cloud"}
    assert client.get("/api/mmc/status").json()["mmc_daily_limit"] == "unlimited"
    answer = upload(client, plate_photo, "/api/anpr/mmc").json()
    assert answer["results"][0]["mmc_make"] == "Renault"


def test_no_client_is_told_where_files_lie(home, client, tmp_path):
    program = tmp_path / "secret" / "llama-server"
    program.parent.mkdir()
    program.write_text('#!/bin/sh\necho "cannot load $0.gguf" >&2\nexit 1\n')
    program.chmod(0o755)
    files = dict.fromkeys(("server_bin", "llm", "mmproj"), str(program))
    home.configure(mmc={"local": files})
    failed = client.put("/api/mmc/backend", json={"backend": "local"}).json()
    assert failed["success"] is False and "llama-server.gguf" in failed["error"]
    assert "secret" not in failed["error"]
    assert "secret" not in client.get("/api/mmc/status").text


def test_switched_off_it_says_so_and_stays_off_until_the_configuration_says_otherwise(
    home, service, plate_photo
):
    home.configure(mmc={"enabled": False, "cloud": {"url": service.url}})
    with home.start(threads=1).client() as client:
        status = client.get("/api/mmc/status").json()
        assert (status["available"], status["error"]) == (False, "MMC is switched off")
        refused = client.put("/api/mmc/backend", json={"backend": "cloud"}).json()
        assert (refused["success"], refused["error"]) == (
            False, "MMC is switched off; to switch it on: zv-anpr mmc-backend cloud",
        )  # fmt: skip
        assert upload(client, plate_photo, "/api/anpr/mmc").json()["results"][0]["mmc_make"] == ""
        assert client.get("/api/health").json()["mmc_enabled"] is False
        assert service.pictures == []
        home.configure(mmc={"enabled": True, "cloud": {"url": service.url}})
        assert client.put("/api/mmc/backend", json={"backend": "cloud"}).json()["success"]
        assert client.get("/api/health").json()["mmc_available"] is True


def test_a_service_that_says_nothing_blocks_neither_the_status_nor_the_stop(home):
    with socket.create_server(("127.0.0.1", 0)) as silent:
        url = f"http://127.0.0.1:{silent.getsockname()[1]}/"
        home.configure(mmc={"cloud": {"url": url, "timeout": 3600}})
        server = home.start(threads=1)
        with server.client() as client:
            for _ in range(12):
                with contextlib.suppress(httpx.ReadTimeout):
                    client.put("/api/mmc/backend", json={"backend": "cloud"}, timeout=0.2)
            assert client.get("/api/mmc/status").json()["available"] is False
            assert (
                "is being changed already"
                in (client.put("/api/mmc/backend", json={"backend": "cloud"}).json()["error"])
            )
        assert home.call("stop_server").returncode == 0
        wait_until(lambda: not server.alive())


def test_a_vehicle_that_is_never_answered_does_not_keep_the_server_from_stopping(
    home, service, plate_photo
):
    home.configure(mmc={"cloud": {"url": service.url, "timeout": 3600}},
                   limits={"stop_seconds": 1, "mmc_seconds": 3600})  # fmt: skip
    server = home.start(threads=1)
    with server.client() as client:
        wait_until(lambda: client.get("/api/health").json()["mmc_available"])
        service.awake.clear()
        asker = threading.Thread(target=_ask_in_vain, args=(server, plate_photo))
        asker.start()
        wait_until(lambda: service.pictures)
    done = home.call("stop_server")
    assert (done.returncode, done.stderr) == (0, "")
    wait_until(lambda: not server.alive())
    asker.join()


def _ask_in_vain(server, photo) -> None:
    with contextlib.suppress(httpx.HTTPError), server.client() as client:
        client.timeout = 120
        upload(client, photo, "/api/anpr/mmc")
