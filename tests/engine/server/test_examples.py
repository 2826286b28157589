"""The examples for operators do what they say: proxies with TLS, and the unit for systemd."""

import os
import shutil
import socket
import subprocess
from pathlib import Path

import httpx
import pytest
from conftest import Home
from processes import free_port, wait_until
from quick_server import quick_server
from reverse_proxies import caddy, nginx

_EXAMPLES = Path(__file__).parents[3] / "examples"
_NAME = "anpr.example"
_OWN_CERTIFICATES = """{
  admin off
  local_certs
  skip_install_trust
  auto_https disable_redirects
}
"""


@pytest.fixture(scope="module")
def server(tmp_path_factory):
    home = Home(tmp_path_factory.mktemp("examples"))
    home.configure(server={"allowed_hosts": [_NAME], "trusted_proxies": ["127.0.0.1"]})
    with quick_server(home) as made:
        yield made


def asked(url: str, method: str, path: str, **options) -> httpx.Response:
    """Ask under the proxy's name, whatever its certificate says."""
    headers = {"Host": _NAME, **options.pop("headers", {})}
    with httpx.Client(base_url=url, verify=False, trust_env=False, timeout=60) as client:
        name = {"sni_hostname": _NAME}
        return client.request(method, path, headers=headers, extensions=name, **options)


def has_certificate(url: str) -> bool:
    try:
        return asked(url, "GET", "/livez").status_code == 200
    except httpx.TransportError:  # it is still being made
        return False


def check_a_proxy_with_tls(url: str, server) -> None:
    wait_until(lambda: has_certificate(url))
    assert asked(url, "GET", "/api/health").status_code == 401
    token = {"X-ZV-ANPR-Token": server.home.token(), "X-Request-ID": f"by-{url[-5:]}"}
    assert asked(url, "GET", "/api/health", headers=token).status_code == 200
    page = {"Origin": f"https://{_NAME}", "Sec-Fetch-Site": "same-origin"}
    given = {"token": server.home.token()}
    signed = asked(url, "POST", "/api/session", json=given, headers=page)
    assert "Secure" in signed.headers["set-cookie"]
    cookie = {"Cookie": signed.headers["set-cookie"].partition(";")[0]}
    assert asked(url, "GET", "/api/health", headers={**page, **cookie}).status_code == 200
    foreign = {**page, **cookie, "Origin": "https://evil.example"}
    assert asked(url, "GET", "/api/health", headers=foreign).status_code == 403
    wait_until(lambda: f"id=by-{url[-5:]}" in server.home.log())


def test_the_example_for_nginx(server, tmp_path):
    if not shutil.which("openssl"):
        pytest.skip("needs openssl")
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
         "-nodes", "-subj", f"/CN={_NAME}", "-days", "1", "-keyout", str(tmp_path / "key"),
         "-out", str(tmp_path / "certificate")],
        check=True, capture_output=True,
    )  # fmt: skip
    port = free_port()
    text = (_EXAMPLES / "proxy" / "nginx.conf").read_text()
    for example, here in (
        ("listen 443", f"listen {port}"),
        ("/etc/ssl/anpr.pem", str(tmp_path / "certificate")),
        ("/etc/ssl/anpr.key", str(tmp_path / "key")),
        ("http://127.0.0.1:8000", server.url),
    ):
        assert example in text
        text = text.replace(example, here)
    with nginx(tmp_path, text, f"https://127.0.0.1:{port}") as url:
        check_a_proxy_with_tls(url, server)


def test_the_example_for_caddy(server, tmp_path):
    port = free_port()
    text = (_EXAMPLES / "proxy" / "Caddyfile").read_text()
    for example, here in (
        (f"\n{_NAME} {{", f"\n{_NAME}:{port} {{"),
        ("127.0.0.1:8000", server.url.removeprefix("http://")),
        ("    health_uri /readyz\n", ""),  # the models of this server may still be loading
    ):
        assert example in text
        text = text.replace(example, here)
    with caddy(tmp_path, _OWN_CERTIFICATES + text, f"https://127.0.0.1:{port}") as url:
        check_a_proxy_with_tls(url, server)


needs_systemd = pytest.mark.skipif(
    not shutil.which("systemd-analyze"), reason="needs systemd-analyze"
)


def analyzed(tmp_path, *arguments: str) -> subprocess.CompletedProcess:
    unit = tmp_path / "zv-anpr.service"
    text = (_EXAMPLES / "systemd" / unit.name).read_text()
    unit.write_text(text.replace("/opt/zv-anpr/bin/python", "/bin/true"))
    return subprocess.run(
        ["systemd-analyze", *arguments, str(unit)], text=True, capture_output=True, check=False
    )


@needs_systemd
def test_the_unit_is_understood_by_systemd(tmp_path):
    verified = analyzed(tmp_path, "verify", "--man=no")
    assert (verified.returncode, verified.stderr) == (0, "")


@needs_systemd
def test_the_unit_is_closed_off(tmp_path):
    judged = analyzed(tmp_path, "security", "--offline=true", "--no-pager", "--threshold=20")
    assert judged.returncode == 0, judged.stdout


def test_whoever_waits_for_the_service_is_told_when_it_is_ready(tmp_path):
    home = Home(tmp_path)
    path = str(tmp_path / "notify")
    home.environment["NOTIFY_SOCKET"] = path
    with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
        manager.bind(path)
        manager.settimeout(300)
        with quick_server(home) as server:
            assert manager.recv(100) == b"READY=1"
            assert server.client().get("/readyz").status_code == 200
            os.kill(server.pid, 15)
            assert manager.recv(100) == b"STOPPING=1"
