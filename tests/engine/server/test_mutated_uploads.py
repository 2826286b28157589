"""Multipart bodies of every damage: each is answered, none is the server's own failure."""

import pytest
from conftest import jpeg
from mutations import variants

BOUNDARY = b"----frontier"
HEAD = b'Content-Disposition: form-data; name="image"; filename="car.jpg"'
REGION = b'Content-Disposition: form-data; name="region"'
FORMS = [
    b"--%s\r\n%s\r\nContent-Type: image/jpeg\r\n\r\n%s\r\n--%s--\r\n"
    % (BOUNDARY, HEAD, jpeg(32, 24), BOUNDARY),
    b"--%s\r\n%s\r\n\r\nkr\r\n--%s\r\n%s\r\n\r\nx\r\n--%s--"
    % (BOUNDARY, REGION, BOUNDARY, HEAD, BOUNDARY),
]
TOKENS = [
    b"--" + BOUNDARY, b"--" + BOUNDARY + b"--", b"\r\n\r\n", b"; ", b'name="image"', HEAD,
    b"filename*=UTF-8''%ff", b"Content-Transfer-Encoding: base64", b"; charset=utf-16",
]  # fmt: skip
ANSWERS = {200, 400, 413, 415, 422}


@pytest.mark.parametrize("form", FORMS)
def test_any_body_has_an_answer(strict_client, form):
    for body in variants([form], 120, TOKENS):
        kind = f"multipart/form-data; boundary={BOUNDARY.decode()}"
        answer = strict_client.post("/api/anpr", content=body, headers={"Content-Type": kind})
        assert answer.status_code in ANSWERS, (answer.status_code, body[:300])
        assert answer.json()["success"] is (answer.status_code == 200)


def test_any_content_type_has_an_answer(strict_client):
    seeds = [b"multipart/form-data; boundary=" + BOUNDARY, b'multipart/form-data; boundary="a b"']
    for kind in variants(seeds, 60, [b"; charset=utf-7", b"multipart/mixed", b"boundary="]):
        if kind.strip() != kind or not kind.isascii() or not kind.decode().isprintable():
            continue  # no header can carry it
        answer = strict_client.post("/api/anpr", content=FORMS[0], headers={"Content-Type": kind})
        assert answer.status_code in ANSWERS, (answer.status_code, kind)
