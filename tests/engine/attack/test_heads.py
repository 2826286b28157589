"""Heads of requests that are made to confuse: each gets its refusal, and none an error of ours."""

import socket

import pytest
from conftest import Home
from processes import wait_until
from quick_server import quick_server


@pytest.fixture(scope="module")
def server(tmp_path_factory):
    with quick_server(Home(tmp_path_factory.mktemp("heads"))) as made:
        yield made


@pytest.fixture
def client(server):
    with server.client() as made:
        yield made
        assert made.get("/api/health").json()["errors"] == 0
        assert "Traceback" not in server.home.log()


@pytest.mark.parametrize("origin", ["http://[", "http://]", "//[", "http://[::1", "\xff\xfe", "\\"])
def test_an_origin_that_is_no_address_is_a_foreign_one(client, origin):
    answer = client.get("/api/health", headers={"Origin": origin.encode("latin-1")})
    assert answer.status_code == 403


@pytest.mark.parametrize(
    "host", ["127.0.0.1%x.evil.example", "[::1%25eth0]", "[::1%x.evil.example]:80", "127.0.0.1\\@x",
             "localhost/x", "localhost?x", "localhost#x", "127.0.0.1:", "127.0.0.1:1:1"]
)  # fmt: skip
def test_a_host_with_more_than_a_name_and_a_port_is_refused(client, host):
    assert client.get("/api/health", headers={"Host": host}).status_code in (400, 403)


def test_a_cookie_of_backslashes_costs_no_time(server, client):
    cookies = {"Cookie": f'{cookie_name(server)}="' + "\\" * 60_000}
    assert client.get("/api/health", headers=cookies).status_code in (200, 400, 431)
    page = {**cookies, "Sec-Fetch-Site": "same-origin"}
    assert client.get("/api/health", headers=page).status_code in (400, 401, 431)


def cookie_name(server) -> str:
    return f"zv_anpr_session_{server.port}"


@pytest.mark.parametrize(
    ("status", "size", "header"),
    [(413, 99_000_000, "A: b"), (403, 10, "Origin: http://evil.example"), (401, 10, "Via: x")],
)
def test_what_is_refused_before_a_route_is_looked_for_counts_for_it(server, client, status, size,
                                                                     header):  # fmt: skip
    with server.connect() as connection:
        head = f"POST /api/anpr HTTP/1.1\r\nHost: localhost\r\nContent-Length: {size}\r\n"
        connection.sendall(f"{head}{header}\r\n\r\n0123456789".encode())
        assert int(connection.makefile("rb").readline().split()[1]) == status
        connection.shutdown(socket.SHUT_WR)
    counted = f'anpr_http_requests_total{{method="POST",route="/api/anpr",status="{status}"}}'
    wait_until(lambda: counted in client.get("/metrics").text)


def test_a_client_may_number_its_request_and_cannot_forge_the_log(server, client):
    answer = client.get("/api/health", headers={"X-Request-ID": "job-17.a"})
    assert answer.headers["x-request-id"] == "job-17.a"
    assert '"GET /api/health" 200' in line_of(server, "id=job-17.a")
    for bad in ("a b", "x" * 65, "a\tb", '"', "\xe4"):
        answer = client.get("/api/health", headers={"X-Request-ID": bad.encode("latin-1")})
        assert len(answer.headers["x-request-id"]) == 16
    refused = client.get("/api/health", headers={"Via": "1.1 x"})
    assert " 401 " in line_of(server, f"id={refused.headers['x-request-id']}")


def test_an_endless_path_is_cut_in_the_log(server, client):
    answer = client.get("/" + "a" * 5000, headers={"X-Request-ID": "endless"})
    assert answer.status_code == 404
    assert len(line_of(server, "id=endless")) < 500


def line_of(server, text: str) -> str:
    def lines() -> list[str]:
        return [line for line in server.home.log().splitlines() if line.endswith(text)]

    wait_until(lines)
    return lines()[0]
