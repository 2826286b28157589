"""Clients that are slow, silent, gone or speak no HTTP: they are let go."""

import contextlib
import time

import pytest
from conftest import jpeg, upload
from processes import wait_until


def test_a_connection_that_is_cut_in_the_middle_is_no_failure(strict_server, strict_client):
    errors = strict_client.get("/api/health").json()["errors"]
    for _ in range(5):
        with strict_server.connect() as connection:
            connection.sendall(
                b"POST /api/anpr HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1000\r\n"
                b"Content-Type: multipart/form-data; boundary=x\r\n\r\n--x\r\n"
            )
    assert strict_client.get("/api/health").json()["errors"] == errors
    assert "Traceback" not in strict_server.home.log()


@pytest.mark.parametrize("sent", [b"", b"GET", b"GET / HTTP/1.1\r\nHost: localhost\r\nX-A: "])
def test_a_client_that_does_not_finish_its_request_is_let_go(strict_server, strict_client, sent):
    with strict_server.connect() as connection:
        connection.sendall(sent)
        connection.settimeout(10)
        with contextlib.suppress(ConnectionResetError):
            assert connection.recv(1000) == b""


def test_a_client_that_drips_its_head_is_let_go(strict_server, strict_client):
    with strict_server.connect() as connection, pytest.raises(OSError):
        connection.sendall(b"GET / HTTP/1.1\r\nHost: localhost\r\n")
        for _ in range(100):
            connection.sendall(b"X-A: b\r\n")
            time.sleep(0.1)


def test_a_client_that_does_not_finish_its_upload_is_told(strict_server, strict_client):
    with strict_server.connect() as connection:
        connection.sendall(
            b"POST /api/anpr HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1000\r\n"
            b"Content-Type: multipart/form-data; boundary=x\r\n\r\n--x\r\n"
        )
        connection.settimeout(10)
        assert connection.makefile("rb").readline().split()[1] == b"408"


@pytest.mark.parametrize(
    "head",
    [b"\x16\x03\x01\x02\x00\x01\x00", b"GET /\r\n\r\n",
     b"GET /\xff HTTP/1.1\r\nHost: localhost\r\n\r\n", b"G" * 100_000,
     b"GET / HTTP/1.1\r\nHost: localhost\r\nX: " + b"y" * 200_000 + b"\r\n\r\n",
     b"POST /api/anpr HTTP/1.1\r\nHost: localhost\r\nContent-Length: -1\r\n\r\n",
     b"POST /api/anpr HTTP/1.1\r\nHost: a\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\n",
     b"GET / HTTP/1.1\r\nHost: localhost\r\nHost: evil.example\r\n\r\n"],
)  # fmt: skip
def test_what_is_no_http_is_refused(strict_server, strict_client, head):
    with strict_server.connect() as connection:
        connection.settimeout(10)
        try:
            connection.sendall(head)
            first = connection.makefile("rb").readline()
        except ConnectionError:  # cut off while still sending
            return
        assert not first or first.split()[1].startswith(b"4")


def test_half_open_clients_do_not_keep_others_out(strict_server, strict_client):
    held = [strict_server.connect() for _ in range(50)]
    try:
        for connection in held:
            connection.sendall(b"POST /api/anpr HTTP/1.1\r\nHost: localhost\r\n")
        assert upload(strict_client, jpeg()).status_code == 200
    finally:
        for connection in held:
            connection.close()
    wait_until(lambda: strict_client.get("/livez").status_code == 200)
