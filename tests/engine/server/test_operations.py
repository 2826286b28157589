"""What operators of a server look after: tokens of their own, clients, logs, the way in and out."""

import json
import os
import signal
import subprocess
import sys

import httpx
import pytest
from conftest import Home
from processes import alive, wait_until
from quick_server import quick_server

PAGE = "https://cameras.example"


@pytest.fixture(scope="module")
def server(tmp_path_factory):
    home = Home(tmp_path_factory.mktemp("operated"))
    home.configure(
        server={
            "unix_socket": str(home.config_dir / "socket"), "log_format": "json",
            "cors_origins": [PAGE], "trusted_proxies": ["127.0.0.1", "10.0.0.0/8", "unix"],
        },
        limits={"client_requests": 30, "drain_seconds": 4},
    )  # fmt: skip
    with quick_server(home) as made:
        yield made


@pytest.fixture
def client(server):
    with server.client() as made:
        yield made


def tokens(server, *arguments: str) -> subprocess.CompletedProcess:
    return subprocess.run(
        [sys.executable, "-m", "zelvoran_anpr.server.tokens", *arguments],
        env=server.home.environment, text=True, capture_output=True, check=False,
    )  # fmt: skip


def coming_from(address: str, **more: str) -> dict[str, str]:
    return {"X-Forwarded-For": address, **more}


def lines(server, **wanted) -> list[dict]:
    made = [json.loads(line) for line in server.home.log().splitlines()]
    return [line for line in made if all(line.get(k) == v for k, v in wanted.items())]


def test_a_token_of_its_own_does_what_its_scope_says_until_it_is_revoked(server, client):
    value = tokens(server, "add", "gate").stdout.strip()
    shown = coming_from("10.1.1.1, 192.0.2.1", **{"X-ZV-ANPR-Token": value})
    assert client.get("/api/region", headers=shown).status_code == 200
    refused = client.put("/api/region", json={"region": "korea"}, headers=shown)
    assert (refused.status_code, refused.json()["error"]) == (
        403, 'token:gate lacks the scope "manage"',
    )  # fmt: skip
    signed = client.post("/api/session", json={"token": value}, headers=coming_from("192.0.2.1"))
    assert signed.status_code == 200
    page = coming_from("192.0.2.1", **{"Sec-Fetch-Site": "same-origin"})
    assert client.get("/api/region", headers=page).status_code == 200
    assert client.put("/api/region", json={"region": "korea"}, headers=page).status_code == 403
    assert "already" in tokens(server, "add", "gate").stderr
    assert tokens(server, "list").stdout.startswith("gate  read  20")
    assert value not in (server.home.config_dir / "api_tokens.json").read_text()
    assert tokens(server, "revoke", "gate").returncode == 0
    assert client.get("/api/region", headers=shown).status_code == 401
    assert client.get("/api/region", headers=page).status_code == 401
    assert "no token" in tokens(server, "revoke", "gate").stderr


def test_a_file_of_tokens_that_cannot_be_understood_lets_nobody_in(server, client):
    file = server.home.config_dir / "api_tokens.json"
    value = tokens(server, "add", "door", "--scope", "manage", "--scope", "read").stdout.strip()
    shown = coming_from("192.0.2.2", **{"Authorization": f"Bearer {value}"})
    assert client.put("/api/region", json={"region": "univ"}, headers=shown).status_code == 200
    good = file.read_text()
    file.write_text(good[:-20])
    assert client.get("/api/region", headers=shown).status_code == 401
    assert "mend or remove" in tokens(server, "add", "more").stderr
    file.write_text(good)
    assert client.get("/api/region", headers=shown).status_code == 200


def test_wrong_tokens_are_soon_not_looked_at_from_that_address(server, client):
    wrong = coming_from("192.0.2.66", **{"X-ZV-ANPR-Token": "wrong"})
    assert [client.get("/api/region", headers=wrong).status_code for _ in range(10)] == [401] * 10
    right = {**wrong, "X-ZV-ANPR-Token": server.home.token()}
    held = client.get("/api/region", headers=right)
    assert held.status_code == 429
    assert 1 <= int(held.headers["retry-after"]) <= 6
    sign_in = client.post("/api/session", json={"token": "x"}, headers=coming_from("192.0.2.66"))
    assert sign_in.status_code == 429
    assert "retry-after" in sign_in.headers
    others = {**right, **coming_from("192.0.2.67")}
    assert client.get("/api/region", headers=others).status_code == 200
    assert client.get("/api/region").status_code == 200
    assert 'anpr_http_refusals_total{reason="throttled"}' in client.get("/metrics").text


def test_a_client_that_asks_too_often_waits_and_programs_here_do_not(server, client):
    token = {"X-ZV-ANPR-Token": server.home.token()}
    often = coming_from("2001:db8::1", **token)
    statuses = [client.get("/api/region", headers=often).status_code for _ in range(32)]
    assert statuses[:30] == [200] * 30
    neighbour = coming_from("2001:db8::2", **token)  # has the same network of its own
    refused = client.get("/api/region", headers=neighbour)
    assert refused.status_code == 429
    assert int(refused.headers["retry-after"]) >= 1
    assert [client.get("/api/region").status_code for _ in range(40)] == [200] * 40


def test_the_client_is_whom_the_trusted_proxies_name(server, client):
    for number, chain, seen in (
        ("chain-1", "192.0.2.9", "192.0.2.9"),
        ("chain-2", "198.51.100.1, 192.0.2.9", "192.0.2.9"),  # the first is the client's own word
        ("chain-3", "192.0.2.9, 10.2.2.2", "192.0.2.9"),
        ("chain-4", "192.0.2.9, nonsense", "127.0.0.1"),
    ):
        headers = coming_from(chain, **{"X-ZV-ANPR-Token": server.home.token()})
        client.get("/api/region", headers={**headers, "X-Request-ID": number})
        wait_until(lambda number=number: lines(server, request_id=number))
        assert lines(server, request_id=number)[0]["client"] == seen


def test_a_cookie_that_was_asked_for_over_tls_stays_there(server, client):
    secure = coming_from("192.0.2.10", **{"X-Forwarded-Proto": "https"})
    signed = client.post("/api/session", json={"token": server.home.token()}, headers=secure)
    assert "Secure" in signed.headers["set-cookie"]
    assert "Secure" not in client.post(
        "/api/session", json={"token": server.home.token()}
    ).headers["set-cookie"]  # fmt: skip


def test_pages_of_a_listed_origin_call_with_a_token_and_never_with_a_cookie(server, client):
    preflight = {"Origin": PAGE, "Access-Control-Request-Method": "PUT"}
    asked = client.options("/api/region", headers=preflight)
    assert asked.status_code == 204
    assert asked.headers["access-control-allow-origin"] == PAGE
    assert "X-ZV-ANPR-Token" in asked.headers["access-control-allow-headers"]
    assert "access-control-allow-credentials" not in asked.headers
    page = {"Origin": PAGE, "Sec-Fetch-Site": "cross-site"}
    refused = client.get("/api/region", headers=page)
    assert refused.status_code == 401
    assert refused.headers["access-control-allow-origin"] == PAGE
    token = {"X-ZV-ANPR-Token": server.home.token()}
    assert client.get("/api/region", headers={**page, **token}).status_code == 200
    client.post("/api/session", json={"token": server.home.token()})
    assert client.get("/api/region", headers={"Sec-Fetch-Site": "same-origin"}).status_code == 200
    assert client.get("/api/region", headers=page).status_code == 401
    for other in ("https://evil.example", "https://cameras.example.evil.example", "null"):
        foreign = client.options("/api/region", headers={**preflight, "Origin": other})
        assert foreign.status_code == 403
        assert "access-control-allow-origin" not in foreign.headers


def test_changes_leave_a_line_that_says_who_and_what(server, client):
    number = {"X-Request-ID": "change-1"}
    client.put("/api/region", json={"region": "korea"}, headers=number)
    client.put("/api/region", json={"region": "univ"})
    wait_until(lambda: lines(server, what="region", request_id="change-1"))
    line = lines(server, what="region", request_id="change-1")[0]
    assert (line["before"], line["after"], line["caller"]) == ("univ", "korea", "local")
    assert line["logger"] == "zelvoran_anpr.audit"
    wait_until(lambda: lines(server, path="/api/region", request_id="change-1", status=200))


@pytest.fixture
def over_unix(server):
    path = str(server.home.config_dir / "socket")
    with httpx.Client(
        transport=httpx.HTTPTransport(uds=path), base_url="http://localhost", timeout=30
    ) as made:
        yield made


def test_the_unix_socket_answers_its_user_and_asks_proxies_for_the_token(server, over_unix):
    assert os.stat(server.home.config_dir / "socket").st_mode & 0o007 == 0
    assert over_unix.get("/api/region").status_code == 200
    passed_on = coming_from("192.0.2.20")
    assert over_unix.get("/api/region", headers=passed_on).status_code == 401
    number = {"X-ZV-ANPR-Token": server.home.token(), "X-Request-ID": "unix-1"}
    assert over_unix.get("/api/region", headers={**passed_on, **number}).status_code == 200
    wait_until(lambda: lines(server, request_id="unix-1"))
    assert lines(server, request_id="unix-1")[0]["client"] == "192.0.2.20"


def test_the_description_names_credentials_servers_operations_and_headers(client):
    described = client.get("/openapi.json").json()
    schemes = described["components"]["securitySchemes"]
    assert schemes["token"]["name"] == "X-ZV-ANPR-Token"
    assert described["servers"][0]["url"] == "/"
    operations = {
        operation["operationId"]: operation
        for path in described["paths"].values() for operation in path.values()
    }  # fmt: skip
    assert {"read_plates", "read_plates_and_vehicles", "health", "region", "change_region",
            "change_mmc_backend", "mmc_status", "sign_in"} <= operations.keys()  # fmt: skip
    photo = operations["read_plates"]
    assert {"token": []} in photo["security"]
    assert "Retry-After" in photo["responses"]["429"]["headers"]
    assert "X-Request-ID" in photo["responses"]["200"]["headers"]
    assert described["components"]["schemas"]["Plate"]["properties"]["plate_text"]["examples"]


def test_metrics_tell_what_runs_what_came_in_and_what_was_refused(client):
    client.put("/api/region", json={"region": "univ"})
    text = client.get("/metrics").text
    assert 'anpr_build_info{python="' in text
    counted = next(
        line for line in text.splitlines() if line.startswith("anpr_http_request_bytes_total")
    )
    assert float(counted.split()[1]) > 0
    assert "anpr_stage_seconds" in text
    for reason in ("token", "scope"):
        assert f'anpr_http_refusals_total{{reason="{reason}"}}' in text


def test_a_server_that_is_told_to_stop_says_so_before_its_port_closes(server, client):
    """The last one: the server is gone afterwards."""
    os.kill(server.pid, signal.SIGTERM)
    wait_until(lambda: client.get("/readyz").text == "stopping\n")
    assert client.get("/api/region").status_code == 200
    os.kill(server.pid, signal.SIGTERM)  # once more: at once
    wait_until(lambda: not alive(server.pid))
    assert not (server.home.config_dir / "socket").exists()
