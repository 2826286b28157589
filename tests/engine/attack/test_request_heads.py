"""Heads of requests that are made to cost, to confuse, or to be taken for another request."""

import time

import pytest
from conftest import jpeg
from processes import wait_until


def asked(server, request: bytes) -> bytes:
    """Return all that is answered until the server closes."""
    with server.connect() as connection:
        connection.sendall(request)
        return b"".join(iter(lambda: connection.recv(65536), b""))


def head(*lines: str, target: str = "/api/region", method: str = "GET") -> bytes:
    return "\r\n".join([f"{method} {target} HTTP/1.1", *lines, "", ""]).encode()


@pytest.mark.parametrize("quote", ['"', ""])
def test_a_cookie_full_of_backslashes_costs_nothing(server, quote):
    cookie = f"Cookie: zv_anpr_session={quote}" + "\\" * 30_000
    begun = time.process_time(), time.monotonic()
    answer = asked(server, head("Host: localhost", cookie, "Connection: close"))
    assert answer.split()[1] == b"200"
    cost = time.monotonic() - begun[1]
    assert cost < 3  # seven seconds and more for parsers that try every backslash anew


def test_headers_have_a_limit_together(server):
    many = [f"X-{number}: {'y' * 1000}" for number in range(40)]
    answer = asked(server, head("Host: localhost", *many))
    assert answer.split()[1] == b"431"
    assert b'"success":false' in answer


def test_two_lengths_of_one_body_are_refused_and_the_connection_ends(server):
    body = b"0\r\n\r\nGET /livez HTTP/1.1\r\nHost: localhost\r\n\r\n"
    request = head("Host: localhost", "Content-Length: 5", "Transfer-Encoding: chunked",
                   "Content-Type: application/json", method="PUT") + body  # fmt: skip
    answer = asked(server, request)
    assert answer.count(b"HTTP/1.1 ") == 1
    assert answer.split()[1] == b"400"
    assert b"connection: close" in answer.lower()


@pytest.mark.parametrize("host", ["127.0.0.1", "localhost:80"])
def test_a_target_may_name_the_host(server, host):
    answer = asked(server, head("Host: x.example", "Connection: close",
                                target=f"http://{host}/api/health?detailed=true"))  # fmt: skip
    assert answer.split()[1] == b"200"
    assert b"memory_mb" in answer


def test_a_foreign_host_in_the_target_counts(server):
    target = "http://evil.example/api/region"
    answer = asked(server, head("Host: localhost", "Connection: close", target=target))
    assert answer.split()[1] == b"403"


@pytest.mark.parametrize("path", ["/livez", "/api/health", "/api/anpr"])
def test_a_client_that_only_finished_sending_gets_its_answer(server, path):
    body = b""
    lines = ["Host: localhost"]
    if path == "/api/anpr":
        body = (
            b'--x\r\nContent-Disposition: form-data; name="image"; filename="a"\r\n\r\n'
            + jpeg()
            + b"\r\n--x--\r\n"
        )
        lines += ["Content-Type: multipart/form-data; boundary=x", f"Content-Length: {len(body)}"]
    import socket

    with server.connect() as connection:
        request = head(*lines, target=path, method="POST" if body else "GET")
        connection.sendall(request + body)
        connection.shutdown(socket.SHUT_WR)
        answer = b"".join(iter(lambda: connection.recv(65536), b""))
    assert b"HTTP/1.1 200 OK" in answer


@pytest.mark.parametrize("charset", ["unicode_escape", "punycode", "utf-16", "rot13", "utf-8"])
def test_a_client_does_not_choose_the_codec(server, charset):
    form = (
        b'--x\r\nContent-Disposition: form-data; name="image"; filename="\\ud800.jpg"\r\n\r\n'
        + jpeg()
        + b'\r\n--x\r\nContent-Disposition: form-data; name="region"\r\n\r\nuniv\r\n--x--\r\n'
    )
    kind = f"multipart/form-data; charset={charset}; boundary=x"
    with server.client() as client:
        answer = client.post("/api/anpr", content=form, headers={"Content-Type": kind})
        assert answer.status_code == 200
        recent = client.get("/api/recent")
        assert recent.status_code == 200
        assert recent.json()["requests"][0]["file"] == "\\ud800.jpg"


def test_a_region_that_is_no_text_is_refused(server):
    with server.client() as client:
        kind = {"Content-Type": "application/json"}
        answer = client.put("/api/region", content=b'{"region": "\\ud800"}', headers=kind)
        assert answer.status_code in (200, 422)
        assert answer.json()["success"] is False
        assert client.get("/api/health").json()["errors"] == 0


def test_a_client_that_left_gives_up_its_place_though_it_said_so_politely(home, tmp_path):
    import socket
    from concurrent.futures import ThreadPoolExecutor

    from conftest import upload
    from held_engine import Hold

    hold = Hold(tmp_path / "hold")
    hold.let_go("load")
    hold.add_to(home.environment)
    home.configure(limits={"queue": 1})
    server = home.start(threads=1)

    def held() -> int:
        health = server.client().get("/api/health?detailed=true").json()
        return health["health_check"]["waiting_or_running"]

    with ThreadPoolExecutor(1) as pool:
        first = pool.submit(lambda: upload(server.client(), jpeg()))
        wait_until(lambda: held() == 1)
        body = (
            b'--x\r\nContent-Disposition: form-data; name="image"; filename="a"\r\n\r\n'
            + jpeg() + b"\r\n--x--\r\n"
        )  # fmt: skip
        lines = ["Host: localhost", "Content-Type: multipart/form-data; boundary=x",
                 f"Content-Length: {len(body)}"]  # fmt: skip
        connection = server.connect()
        connection.sendall(head(*lines, target="/api/anpr", method="POST") + body)
        wait_until(lambda: held() == 2)
        connection.shutdown(socket.SHUT_WR)
        connection.close()
        wait_until(lambda: held() == 1)
        hold.let_go("read")
        assert first.result().status_code == 200
