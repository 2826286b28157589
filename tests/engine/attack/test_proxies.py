"""Whoever comes through a proxy shows the token, whatever the proxy says or leaves out."""

import os
import subprocess
import sys

import httpx
import pytest
from conftest import Home
from processes import free_port
from quick_server import quick_server
from reverse_proxies import caddy, nginx, running

_PLAIN_NGINX = "server {{ listen {listen}; location / {{ proxy_pass {server}; }} }}"
_PLAIN_CADDY = """
{{
  admin off
}}
http://:{port} {{
  reverse_proxy {address} {{
    header_up -X-Forwarded-For
    header_up -X-Forwarded-Proto
    header_up -X-Forwarded-Host
    header_up -Via
    header_up Host {address}
  }}
}}
"""
_PLAIN_TUNNEL = """
import socket, sys, threading
listener = socket.create_server((sys.argv[1], int(sys.argv[2])))
def copy(source, target):
    while data := source.recv(65536):
        target.sendall(data)
    target.shutdown(socket.SHUT_WR)
while True:
    client, _ = listener.accept()
    server = socket.create_connection(("127.0.0.1", int(sys.argv[3])))
    for ends in ((client, server), (server, client)):
        threading.Thread(target=copy, args=ends, daemon=True).start()
"""


@pytest.fixture(scope="module")
def server(tmp_path_factory):
    with quick_server(Home(tmp_path_factory.mktemp("proxied"))) as made:
        yield made


def plain_nginx(folder, server, host: str):
    port = free_port()
    block = _PLAIN_NGINX.format(listen=f"{host}:{port}", server=server.url)
    return nginx(folder, block, f"http://127.0.0.1:{port}")


def plain_caddy(folder, server):
    port = free_port()
    text = _PLAIN_CADDY.format(port=port, address=server.url.removeprefix("http://"))
    return caddy(folder, text, f"http://127.0.0.1:{port}")


def tunnel(folder, server, host: str):
    port = free_port()
    command = [sys.executable, "-c", _PLAIN_TUNNEL, host, str(port), str(server.port)]
    return running(command, f"http://127.0.0.1:{port}", folder)


def check_that_the_token_is_asked_for(url: str, server) -> None:
    with httpx.Client(base_url=url, trust_env=False, timeout=30) as client:
        for header in ({}, {"Host": f"127.0.0.1:{server.port}"}):
            for method, path, body in (
                ("GET", "/api/health?detailed=true", None),
                ("GET", "/api/mmc/status", None),
                ("PUT", "/api/mmc/backend", {"backend": "local"}),
                ("PUT", "/api/region", {"region": "korea"}),
                ("GET", "/metrics", None),
            ):
                refused = client.request(method, path, json=body, headers=header)
                assert refused.status_code == 401, (method, path)
        photo = {"image": ("car.jpg", b"x", "image/jpeg")}
        assert client.post("/api/anpr", files=photo).status_code == 401
        token = {"X-ZV-ANPR-Token": server.home.token()}
        assert client.get("/api/health", headers=token).status_code == 200
    with server.client() as near:  # nothing was changed, and who is here needs no token
        assert near.get("/api/region").json()["active_region"] == "univ"
        assert near.put("/api/region", json={"region": "univ"}).json()["success"]


@pytest.mark.parametrize("host", ["0.0.0.0", "127.0.0.1"])
def test_a_plain_nginx_of_the_same_user(server, tmp_path, host):
    with plain_nginx(tmp_path, server, host) as url:
        check_that_the_token_is_asked_for(url, server)


def test_a_caddy_that_tells_nothing_of_its_clients(server, tmp_path):
    with plain_caddy(tmp_path, server) as url:
        check_that_the_token_is_asked_for(url, server)


@pytest.mark.parametrize("host", ["0.0.0.0", "127.0.0.1"])
def test_a_tunnel_that_copies_bytes(server, tmp_path, host):
    with tunnel(tmp_path, server, host) as url:
        check_that_the_token_is_asked_for(url, server)


_CALL = """
import os, socket, sys
"".encode("idna")  # loaded while its file may be read
{before}
server = socket.create_connection(("127.0.0.1", int(sys.argv[1])))
server.sendall(b"GET /api/health HTTP/1.0\\r\\nHost: localhost\\r\\n\\r\\n")
print(server.makefile().readline().split()[1])
"""


@pytest.mark.parametrize(
    "before",
    ["", "s = socket.create_server(('127.0.0.1', 0))",
     "a, b = socket.socketpair()", "s = socket.socket(); s.bind(('127.0.0.1', 0))"],
)  # fmt: skip
def test_a_program_that_serves_nobody_needs_no_token(server, before):
    assert call(server, before) == "200"


@pytest.mark.parametrize(
    "before",
    ["s = socket.create_server(('', 0))",
     "s = socket.create_server(('::', 0), family=socket.AF_INET6)",
     "s = socket.socket(socket.AF_UNIX); s.bind('\\0' + sys.argv[1]); s.listen()",
     "s = socket.socket(type=socket.SOCK_DGRAM); s.bind(('', 0))"],
)  # fmt: skip
def test_a_program_that_others_can_reach_needs_the_token(server, before):
    assert call(server, before) == "401"


def call(server, before: str) -> str:
    program = [sys.executable, "-S", "-E", "-c", _CALL.format(before=before), str(server.port)]
    return subprocess.run(program, stdout=subprocess.PIPE, text=True, check=True).stdout.strip()


@pytest.mark.skipif(os.geteuid() != 0, reason="only root can be somebody else")
def test_a_program_of_another_user_needs_the_token(server):
    before = "os.setgid(65534); os.setuid(65534)"
    assert call(server, before) == "401"
