"""What the API answers, on a real photo with the real engine."""

import httpx
import pytest
from conftest import jpeg, upload

PLATE_KEYS = {
    "plate_text", "confidence", "bbox", "bbox_confidence", "mmc_make", "mmc_model", "mmc_color",
}  # fmt: skip


@pytest.fixture
def client(server):
    with server.client() as made:
        yield made


def test_health_tells_what_runs(client):
    health = client.get("/api/health").json()
    assert health["status"] == "ok"
    assert (health["threads"], health["region"]) == (2, "univ")
    assert (health["detector_version"], health["ocr_version"]) == ("320p_fp32", "fp32")
    assert health["uptime"] > 0
    assert "health_check" not in health
    detailed = client.get("/api/health", params={"detailed": "true"}).json()
    assert detailed["health_check"]["healthy"] is True
    assert 20 < detailed["health_check"]["memory_mb"] < 4000


def test_a_photo_without_a_plate_gives_no_results(client):
    answer = upload(client, jpeg()).json()
    assert answer["results"] == []
    assert (answer["width"], answer["height"], answer["region"]) == (640, 480, "univ")
    assert answer["processing_sec"] >= 0


def test_several_photos_come_in_one_request_each_with_its_own_answer(client):
    photos = [("images", (name, data, "image/jpeg")) for name, data in (
        ("one.jpg", jpeg()), ("two.txt", b"no photo"), ("three.jpg", jpeg(320, 240)))]  # fmt: skip
    answer = client.post("/api/anpr/batch", files=photos, data={"region": "Germany"}).json()
    assert answer["success"] is True
    one, two, three = answer["photos"]
    assert (one["file"], one["status"], one["answer"]["width"]) == ("one.jpg", 200, 640)
    assert (one["answer"]["region"], three["answer"]["height"]) == ("de", 240)
    assert (two["status"], two["success"], two["answer"]) == (422, False, None)
    assert "no JPEG" in two["error"]
    assert client.post("/api/anpr/batch", files=[photos[0]] * 17).status_code == 413
    refused = client.post("/api/anpr/batch", files=photos, data={"region": "atlantis"})
    assert refused.status_code == 422


def test_the_stages_of_a_photo_are_timed(client):
    upload(client, jpeg())
    text = client.get("/metrics").text
    for stage in ("waiting", "decoding", "detecting", "reading"):
        assert f'anpr_stage_seconds_count{{stage="{stage}"}}' in text


def test_served_requests_are_counted_and_errors_of_clients_are_not(client):
    before = client.get("/api/health").json()
    upload(client, jpeg())
    upload(client, b"no image")
    after = client.get("/api/health").json()
    assert after["requests_served"] == before["requests_served"] + 1
    assert after["errors"] == before["errors"]


def test_a_request_may_name_its_region(client):
    assert upload(client, jpeg(), region="Germany").json()["region"] == "de"
    assert upload(client, jpeg(), region="").json()["region"] == "univ"
    refused = upload(client, jpeg(), region="atlantis")
    assert refused.status_code == 422
    assert "atlantis" in refused.json()["error"]


def test_the_region_changes_for_those_who_name_none(client):
    changed = client.put("/api/region", json={"region": "korea"}).json()
    assert changed == {"success": True, "previous_region": "univ", "current_region": "korea"}
    assert client.get("/api/region").json() == {
        "default_region": "univ", "active_region": "korea",
    }  # fmt: skip
    assert upload(client, jpeg()).json()["region"] == "korea"
    assert client.put("/api/region", json={"region": "univ"}).json()["success"] is True


def test_an_unknown_region_is_answered_and_changes_nothing(client):
    answer = client.put("/api/region", json={"region": "atlantis"})
    assert answer.status_code == 200
    assert answer.json()["success"] is False
    assert "atlantis" in answer.json()["error"]
    assert client.get("/api/region").json()["active_region"] == "univ"


def test_the_regions_are_listed(client):
    regions = client.get("/api/regions").json()
    assert regions["internal_groups"] == ["univ", "eup", "na", "kr", "cn", "jp"]
    assert {"code": "kr", "name": "korea"} in regions["groups"]
    assert {"code": "de", "name": "Germany", "group": "eup"} in regions["countries"]


def test_mmc_without_a_service_says_why_and_loses_no_plates(client):
    status = client.get("/api/mmc/status").json()
    assert status["available"] is False
    assert status["backend"] == "cloud"
    assert status["error"]
    assert {"mmc_calls_today", "mmc_daily_limit", "mmc_remaining"} <= status.keys()
    assert upload(client, jpeg(), "/api/anpr/mmc").json()["results"] == []


def test_an_mmc_backend_that_cannot_start_leaves_the_one_in_use(client):
    for name in ("local", "abacus"):
        answer = client.put("/api/mmc/backend", json={"backend": name})
        assert answer.status_code == 200
        body = answer.json()
        assert (body["success"], body["backend"]) == (False, "cloud")
        assert body["error"]


def test_bodies_that_are_not_as_described_are_refused_in_one_line(client):
    for body in ({}, {"region": None}, {"region": 5}, [], "korea"):
        answer = client.put("/api/region", json=body)
        assert answer.status_code == 422
        assert answer.json()["success"] is False
        assert "\n" not in answer.json()["error"]
    broken = client.put(
        "/api/region", content=b"{", headers={"content-type": "application/json"}
    )  # fmt: skip
    assert broken.status_code == 422


@pytest.mark.parametrize(
    ("method", "path", "allowed"),
    [
        ("DELETE", "/api/region", "GET, HEAD, PUT"),
        ("PATCH", "/api/session", "DELETE, GET, HEAD, POST"),
        ("GET", "/api/mmc/backend", "PUT"),
        ("PUT", "/api/anpr", "POST"),
        ("OPTIONS", "/api/health", "GET, HEAD"),
        ("POST", "/", "GET, HEAD"),
        ("POST", "/openapi.json", "GET, HEAD"),
        ("POST", "/livez", "GET, HEAD"),
        ("DELETE", "/static/main.js", "GET, HEAD"),
        ("PUT", "/static/swagger/swagger-ui.css", "GET, HEAD"),
        ("FROB", "/api/region", "GET, HEAD, PUT"),
    ],
)
def test_a_method_that_is_not_offered_is_answered_with_those_that_are(
    client, method, path, allowed
):
    answer = client.request(method, path)
    assert (answer.status_code, answer.headers["allow"]) == (405, allowed)
    assert answer.json() == {"success": False, "error": f"{method} is not offered here"}


@pytest.mark.parametrize("path", ["/", "/docs", "/api/health", "/api/region", "/livez"])
def test_what_can_be_had_can_be_asked_about(client, path):
    whole, head = client.get(path), client.head(path)
    assert (head.status_code, head.content) == (200, b"")
    assert head.headers["content-type"] == whole.headers["content-type"]


@pytest.mark.parametrize(
    ("method", "path"),
    [("put", "/api/region"), ("put", "/api/mmc/backend"), ("post", "/api/session")],
)
@pytest.mark.parametrize("body", [b"\xff\xfe", b"{", b"[" * 30_000, b" " * 100_000])
def test_a_refusal_is_one_that_the_description_names(client, method, path, body):
    answer = client.request(
        method, path, content=body, headers={"content-type": "application/json"}
    )
    described = client.get("/openapi.json").json()["paths"][path][method]["responses"]
    assert 400 <= answer.status_code < 500
    assert described[str(answer.status_code)]["content"]["application/json"]["schema"] == {
        "$ref": "#/components/schemas/Problem"
    }
    assert answer.json().keys() == {"success", "error"}


@pytest.mark.parametrize("path", ["/livez", "/readyz", "/metrics"])
def test_refusals_of_probes_are_described_too(client, path):
    described = client.get("/openapi.json").json()["paths"][path]["get"]["responses"]
    refused = client.get(path, headers={"Origin": "http://evil.example"})
    assert (refused.status_code, refused.headers["content-type"]) == (403, "application/json")
    assert described["403"]["content"].keys() == {"application/json"}
    assert described["200"]["content"].keys() == {"text/plain"}


def test_recent_requests_are_remembered_newest_first(client):
    files = {"image": ("one.jpg", jpeg(), "image/jpeg")}
    client.post("/api/anpr", files=files)
    client.post("/api/anpr", files={"image": ("two.jpg", jpeg(), "image/jpeg")})
    names = [entry["file"] for entry in client.get("/api/recent?count=2").json()["requests"]]
    assert names == ["two.jpg", "one.jpg"]


def test_metrics_are_in_the_text_form_of_prometheus(client):
    from prometheus_client.parser import text_string_to_metric_families

    upload(client, jpeg())
    answer = client.get("/metrics")
    assert answer.headers["content-type"].startswith("text/plain; version=0.0.4")
    families = {family.name: family for family in text_string_to_metric_families(answer.text)}
    assert families["anpr_ready"].samples[0].value == 1
    counted = {
        (sample.labels["route"], sample.labels["status"]): sample.value
        for sample in families["anpr_http_requests"].samples
        if sample.name.endswith("_total")
    }
    assert counted["/api/anpr", "200"] >= 1


def test_pages_and_all_they_load_come_from_here(client):
    import re

    for page in ("/", "/login", "/docs"):
        answer = client.get(page)
        assert answer.headers["content-type"].startswith("text/html")
        assert "default-src 'none'" in answer.headers["content-security-policy"]
        links = re.findall(r'(?:src|href)="([^"]+)"', answer.text)
        assert links
        for link in links:
            assert link.startswith(("/", "#"))
            if not link.startswith("#"):
                assert client.get(link).status_code == 200


def test_no_path_of_the_machine_can_be_reached(server):
    with server.connect() as connection:
        connection.sendall(
            b"GET /static/../../../zelvoran_anpr_server_config.py HTTP/1.1\r\n"
            b"Host: localhost\r\nConnection: close\r\n\r\n"
        )
        assert connection.makefile("rb").readline().split()[1] == b"404"
    encoded = httpx.get(f"{server.url}/static/%2e%2e/serve.py", trust_env=False)
    assert encoded.status_code == 404


def test_a_plate_on_a_photo_is_read(client, plate_photo):
    answer = upload(client, plate_photo).json()
    assert answer["results"], "no plate was found"
    plate = answer["results"][0]
    assert plate.keys() == PLATE_KEYS
    assert plate["plate_text"]
    assert 0 < plate["confidence"] <= 100
    left, top, right, bottom = plate["bbox"]
    assert 0 <= left < right <= answer["width"]
    assert 0 <= top < bottom <= answer["height"]
