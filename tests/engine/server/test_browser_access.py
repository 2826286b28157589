"""What a browser may do: our own page when signed in, pages of others nothing."""

import pytest
from conftest import jpeg

EVIL = "https://evil.example"


@pytest.fixture
def client(server):
    with server.client() as made:
        yield made


@pytest.mark.parametrize("origin", [EVIL, "null", "http://localhost:1", "http://127.0.0.1"])
def test_a_page_of_another_origin_cannot_call(server, client, origin):
    headers = {"Origin": origin}
    assert upload_from(client, headers).status_code == 403
    assert client.put("/api/mmc/backend", json={"backend": "local"}, headers=headers
                      ).status_code == 403  # fmt: skip
    preflight = client.options(
        "/api/mmc/backend", headers={**headers, "Access-Control-Request-Method": "PUT"}
    )
    assert preflight.status_code == 403
    assert "access-control-allow-origin" not in preflight.headers
    token = {"X-ZV-ANPR-Token": server.home.token()}
    assert client.get("/api/region", headers={**headers, **token}).status_code == 403
    assert client.post("/api/session", json={"token": "x"}, headers=headers).status_code == 403


@pytest.mark.parametrize("site", ["cross-site", "same-site"])
def test_a_browser_says_when_another_site_asks(client, site):
    headers = {"Sec-Fetch-Site": site, "Sec-Fetch-Mode": "no-cors"}
    assert client.get("/api/health", headers=headers).status_code == 403
    assert client.get("/metrics", headers=headers).status_code == 403
    link = {"Sec-Fetch-Site": site, "Sec-Fetch-Mode": "navigate"}
    assert client.get("/login", headers=link).status_code == 200
    assert client.get("/api/health", headers=link).status_code == 403


def test_our_own_page_needs_a_session(server, client):
    own = {"Origin": server.url, "Sec-Fetch-Site": "same-origin"}
    assert client.get("/api/health", headers=own).status_code == 401
    assert client.get("/api/session", headers=own).json() == {"signed_in": False}
    wrong = client.post("/api/session", json={"token": "wrong"}, headers=own)
    assert wrong.status_code == 401
    assert "set-cookie" not in wrong.headers
    signed = client.post("/api/session", json={"token": server.home.token()}, headers=own)
    cookie = signed.headers["set-cookie"]
    assert "HttpOnly" in cookie
    assert "SameSite=strict" in cookie
    assert server.home.token() not in cookie
    assert client.get("/api/health", headers=own).status_code == 200
    assert client.put("/api/region", json={"region": "univ"}, headers=own).status_code == 200
    client.delete("/api/session", headers=own)
    assert client.get("/api/health", headers=own).status_code == 401


@pytest.mark.parametrize("cookie", ["", ".", "..", "1.a.b", "x.y." + "0" * 64, '"', "a=b;c"])
def test_a_made_up_session_is_none(server, client, cookie):
    headers = {"Sec-Fetch-Site": "same-origin", "Cookie": f"{cookie_name(server)}={cookie}"}
    assert client.get("/api/health", headers=headers).status_code == 401


def test_a_changed_session_is_none(server, client):
    client.post("/api/session", json={"token": server.home.token()})
    value = client.cookies[cookie_name(server)]
    client.cookies.clear()
    issued, rest = value.split(".", 1)
    later = f"{int(issued) + 1}.{rest}"
    headers = {"Sec-Fetch-Site": "same-origin"}
    for given, status in ((value, 200), (later, 401)):
        answer = client.get(
            "/api/health", headers={**headers, "Cookie": f"{cookie_name(server)}={given}"}
        )
        assert answer.status_code == status


def test_a_copy_of_the_cookie_ends_with_the_session(server, client):
    own = {"Sec-Fetch-Site": "same-origin"}
    client.post("/api/session", json={"token": server.home.token()})
    copy = {**own, "Cookie": f"{cookie_name(server)}={client.cookies[cookie_name(server)]}"}
    assert client.get("/api/health", headers=own).status_code == 200
    client.delete("/api/session", headers=own)
    client.cookies.clear()
    assert client.get("/api/health", headers=copy).status_code == 401


def cookie_name(server) -> str:
    return f"zv_anpr_session_{server.port}"


def upload_from(client, headers):
    files = {"image": ("car.jpg", jpeg(), "image/jpeg")}
    return client.post("/api/anpr", files=files, headers=headers)


def test_answers_forbid_framing_sniffing_and_keeping(client):
    headers = client.get("/api/health").headers
    assert headers["x-frame-options"] == "DENY"
    assert headers["x-content-type-options"] == "nosniff"
    assert headers["cache-control"] == "no-store"
    assert headers["cross-origin-resource-policy"] == "same-origin"
    assert "server" not in headers
