"""Who may call: programs here and holders of the token, by a name that is ours."""

import subprocess
import sys

import pytest
from conftest import Server, jpeg, upload


@pytest.fixture
def client(server):
    with server.client() as made:
        yield made


def test_a_program_on_this_machine_needs_no_token(client):
    assert client.get("/api/health?detailed=true").status_code == 200
    assert client.get("/api/mmc/status").status_code == 200
    assert client.put("/api/mmc/backend", json={"backend": "cloud"}).status_code == 200
    assert upload(client, jpeg()).status_code == 200


@pytest.mark.parametrize("style", ["X-ZV-ANPR-Token", "Authorization"])
def test_a_token_is_accepted_and_a_wrong_one_refused(server, client, style):
    prefix = "Bearer " if style == "Authorization" else ""
    good = client.get("/api/region", headers={style: prefix + server.home.token()})
    assert good.status_code == 200
    for wrong in ("wrong", server.home.token()[:-1], "\xe4"):
        header = {style: (prefix + wrong).encode("latin-1")}
        refused = client.get("/api/region", headers=header)
        assert refused.status_code == 401
        assert refused.headers["www-authenticate"].startswith("Bearer")
        assert "token is wrong" in refused.json()["error"]


@pytest.mark.parametrize(
    "host",
    ["evil.example", "evil.example:8000", "127.0.0.1.evil.example", "10.1.2.3", "user@localhost",
     "localhost:99999", "[::1", "", "localhost evil.example", "0.0.0.0"],
)  # fmt: skip
def test_a_foreign_host_name_is_refused_everywhere(server, client, host):
    for path in ("/", "/api/health", "/livez", "/docs", "/static/main.js"):
        answer = client.get(path, headers={"Host": host, "X-ZV-ANPR-Token": server.home.token()})
        assert answer.status_code in (400, 403), path


@pytest.mark.parametrize(
    "host", ["localhost", "LOCALHOST.", "127.0.0.1:1", "127.9.9.9", "[::1]:80"]
)
def test_names_of_this_machine_are_accepted(client, host):
    assert client.get("/api/health", headers={"Host": host}).status_code == 200


def test_a_request_without_a_host_is_refused(server):
    with server.connect() as connection:
        connection.sendall(b"GET /api/health HTTP/1.0\r\n\r\n")
        assert connection.makefile("rb").readline().split()[1] in (b"400", b"403")


@pytest.mark.parametrize("header", ["X-Forwarded-For", "Forwarded", "X-Real-IP", "Via"])
def test_what_a_proxy_passes_on_is_not_from_this_machine(server, client, header):
    passed_on = {header: "127.0.0.1"}
    assert client.get("/api/health", headers=passed_on).status_code == 401
    token = {"X-ZV-ANPR-Token": server.home.token()}
    assert client.get("/api/health", headers={**passed_on, **token}).status_code == 200


def test_probes_are_answered_without_a_token_and_tell_nothing(client):
    passed_on = {"Via": "1.1 proxy"}
    assert client.get("/livez", headers=passed_on).text == "ok\n"
    assert client.get("/readyz", headers=passed_on).text == "ok\n"
    assert client.get("/metrics", headers=passed_on).status_code == 401


def test_programs_here_need_the_token_too_when_so_configured(home):
    home.configure(server={"require_token": True, "allowed_hosts": ["cameras.lan"]})
    server: Server = home.start()
    with server.client() as client:
        assert client.get("/api/health").status_code == 401
        assert client.get("/readyz").status_code == 200
        token = {"Authorization": f"Bearer {home.token()}"}
        assert client.get("/api/health", headers=token).status_code == 200
        named = {**token, "Host": "cameras.lan:80"}
        assert client.get("/api/health", headers=named).status_code == 200


def test_who_comes_over_the_network_needs_the_token(home):
    import socket

    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        try:
            probe.connect(("192.0.2.1", 9))  # nothing is sent; it tells this machine's address
        except OSError:
            pytest.skip("this machine has no network address")
        own = probe.getsockname()[0]
    (home.config_dir / "api_token").write_text("t" * 40)
    server = home.start(host="0.0.0.0")
    # From its own address to itself: that never left the machine.
    import httpx

    with httpx.Client(base_url=f"http://{own}:{server.port}", trust_env=False) as near:
        assert near.get("/api/health").status_code == 200
        assert near.get("/api/health", headers={"Host": "evil.example"}).status_code == 403
    # From 127.0.0.1 to another address of the machine is local as well; a made-up one is not ours.
    with server.client() as client:
        wrong = {"X-ZV-ANPR-Token": "u" * 40}
        assert client.get("/api/health", headers=wrong).status_code == 401


def test_a_rotated_token_counts_at_once_and_the_old_one_until_a_restart(home):
    server = home.start()
    old = home.token()
    code = "import zelvoran_anpr.zelvoran_anpr_server_config as c; c.ensure_api_token(rotate=True)"
    subprocess.run([sys.executable, "-c", code], env=home.environment, check=True)
    with server.client() as client:
        statuses = [
            client.get("/api/health", headers={"X-ZV-ANPR-Token": token}).status_code
            for token in (old, home.token())
        ]
        assert statuses == [200, 200]
        assert home.call("restart_server").returncode == 0
        statuses = [
            client.get("/api/health", headers={"X-ZV-ANPR-Token": token}).status_code
            for token in (old, home.token())
        ]
        assert statuses == [401, 200]
