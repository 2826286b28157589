"""The cloud backend against a real HTTP service on loopback: key, quota, time-outs, refusals."""

import io
import json
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

import numpy as np
import pytest
from PIL import Image
from zelvoran_anpr.mmc import MmcError, create_backend

PHOTO = np.full((40, 60, 3), (250, 0, 0), dtype=np.uint8)


class Service:
    """Answers `status` and `body` after `delay` seconds; keeps what it was sent."""

    def __init__(self) -> None:
        self.status, self.headers, self.seen = 200, {}, []
        self.body = json.dumps({"make": "Fiat", "model": "500", "color": "red", "score": 0.9})
        self.wait = threading.Event()
        self.wait.set()

    def __enter__(self) -> "Service":
        service = self

        class Handler(BaseHTTPRequestHandler):
            def do_HEAD(self) -> None:
                self._answer()

            def do_POST(self) -> None:
                self._answer()

            def log_message(self, *_: object) -> None:
                pass

            def _answer(self) -> None:
                content = self.rfile.read(int(self.headers.get("Content-Length", 0)))
                service.seen.append((self.command, self.path, dict(self.headers), content))
                service.wait.wait()
                self.send_response(service.status)
                for name, value in service.headers.items():
                    self.send_header(name, value)
                self.end_headers()
                if self.command == "POST":
                    self.wfile.write(service.body.encode())

        self._server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._server.daemon_threads = True
        threading.Thread(target=self._server.serve_forever, args=(0.02,), daemon=True).start()
        self.url = f"http://127.0.0.1:{self._server.server_address[1]}/v1/vehicle"
        return self

    def __exit__(self, *_: object) -> None:
        self.wait.set()
        self._server.shutdown()
        self._server.server_close()

    def posts(self) -> list:
        return [seen for seen in self.seen if seen[0] == "POST"]


@pytest.fixture
def service(home):
    with Service() as running:
        yield running


@pytest.fixture
def make(service, tmp_path):
    def build(**cloud):
        section = {"url": service.url, "api_key": "k3y", "timeout": 5, **cloud}
        return create_backend({"backend": "cloud", "cloud": section}, tmp_path)

    return build


@pytest.mark.parametrize("config", [{}, {"backend": None}, {"backend": "cloud", "cloud": None}])
def test_off_until_configured(home, config):
    backend = create_backend(config, None)
    assert backend.name == "cloud" and backend.available() is False
    with pytest.raises(MmcError, match="cloud MMC is not configured: set mmc.cloud.url"):
        backend.start()
    status = backend.status()
    assert status["available"] is False and "not configured" in status["error"]
    with pytest.raises(MmcError, match="not running"):
        backend.recognise(PHOTO)


def test_one_call(make, service):
    backend = make()
    backend.start()
    assert backend.recognise(PHOTO) == {"make": "Fiat", "model": "500", "color": "red"}
    [(_, path, headers, content)] = service.posts()
    assert path == "/v1/vehicle"
    assert headers["Authorization"] == "Bearer k3y"
    assert headers["Content-Type"] == "image/jpeg"
    assert Image.open(io.BytesIO(content)).size == (60, 40)
    assert backend.status() == {
        "available": True,
        "backend": "cloud",
        "mmc_calls_today": 1,
        "mmc_daily_limit": 500,
        "mmc_remaining": 499,
    }


def test_the_key_of_the_environment_wins(make, service, monkeypatch):
    monkeypatch.setenv("ZELVORAN_MMC_API_KEY", "from-env")
    backend = make()
    backend.start()
    backend.recognise(PHOTO)
    assert service.posts()[0][2]["Authorization"] == "Bearer from-env"


def test_the_quota_ends_the_day(make, service):
    backend = make(daily_limit=2)
    backend.start()
    backend.recognise(PHOTO)
    backend.recognise(PHOTO)
    with pytest.raises(MmcError, match="today's 2 MMC calls are used up"):
        backend.recognise(PHOTO)
    assert len(service.posts()) == 2
    assert backend.status()["mmc_remaining"] == 0


def test_the_count_survives_a_restart(make):
    first = make(daily_limit=1)
    first.start()
    first.recognise(PHOTO)
    first.stop()
    second = make(daily_limit=1)
    second.start()
    with pytest.raises(MmcError, match="used up"):
        second.recognise(PHOTO)


def test_no_service_at_all(make):
    backend = make(url="http://127.0.0.1:1/")
    with pytest.raises(MmcError, match="cannot reach the MMC service 127.0.0.1:1: Connection"):
        backend.start()
    assert "Connection refused" in backend.status()["error"]


def test_a_call_that_never_left_is_not_counted(make, service):
    backend = make()
    backend.start()
    service._server.shutdown()
    service._server.server_close()
    with pytest.raises(MmcError, match="cannot reach the MMC service"):
        backend.recognise(PHOTO)
    assert backend.status()["mmc_calls_today"] == 0


def test_a_service_that_is_slow_is_given_up_and_counted(make, service):
    backend = make(timeout=0.3)
    backend.start()
    service.wait.clear()
    with pytest.raises(MmcError, match="it stopped answering"):
        backend.recognise(PHOTO)
    assert backend.status()["mmc_calls_today"] == 1


@pytest.mark.parametrize("status", [401, 403])
def test_a_refused_key_is_named_at_start_and_later(make, service, status):
    backend = make()
    backend.start()
    service.status = status
    with pytest.raises(MmcError, match="refused the key; check mmc.cloud.api_key"):
        backend.recognise(PHOTO)
    with pytest.raises(MmcError, match="refused the key"):
        make().start()


@pytest.mark.parametrize(
    ("status", "headers", "told"),
    [
        (429, {"Retry-After": "30"}, "takes no more calls now; try again in 30 s"),
        (429, {"Retry-After": "Wed, 21 Oct 2026 07:28:00 GMT"}, "takes no more calls now$"),
        (500, {}, "answered 500"),
        (302, {"Location": "http://127.0.0.1:1/"}, "answered 302"),
    ],
)
def test_what_the_service_refuses_is_told(make, service, status, headers, told):
    backend = make()
    backend.start()
    service.status, service.headers = status, headers
    with pytest.raises(MmcError, match=told):
        backend.recognise(PHOTO)


@pytest.mark.parametrize("body", ["<html>", "[1]", ""])
def test_an_answer_that_is_none_is_told(make, service, body):
    backend = make()
    backend.start()
    service.body = body
    with pytest.raises(MmcError, match="no JSON|not an object"):
        backend.recognise(PHOTO)


def test_a_service_without_head_is_reachable_all_the_same(make, service):
    service.status = 405
    make().start()


def test_stop_waits_for_the_call_under_way(make, service):
    backend = make()
    backend.start()
    service.wait.clear()
    answers = []
    asking = threading.Thread(target=lambda: answers.append(backend.recognise(PHOTO)))
    asking.start()
    while not service.posts():
        pass
    threading.Timer(0.2, service.wait.set).start()
    backend.stop()
    asking.join()
    assert answers[0]["make"] == "Fiat" and backend.available() is False


def test_an_address_of_another_kind_is_refused(make):
    with pytest.raises(MmcError, match="must start with https:// or http://"):
        make(url="file:///etc/passwd").start()
