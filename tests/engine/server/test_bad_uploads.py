"""Uploads that are wrong, huge, cut off or made to hurt: each is answered."""

import io
import struct
import zlib

import pytest
from conftest import jpeg, upload
from PIL import Image


def picture(format_name: str, width: int = 64, height: int = 48, mode: str = "RGB") -> bytes:
    stream = io.BytesIO()
    Image.new(mode, (width, height)).save(stream, format_name)
    return stream.getvalue()


def png_bomb(side: int) -> bytes:
    """Return a small PNG whose head promises side x side pixels."""

    def chunk(name: bytes, data: bytes) -> bytes:
        check = zlib.crc32(name + data)
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", check)

    head = struct.pack(">IIBBBBB", side, side, 8, 2, 0, 0, 0)
    pixels = zlib.compress(b"\0" * 1_000_000, 9)
    return (
        b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", pixels) + chunk(b"IEND", b"")
    )


@pytest.mark.parametrize("format_name", ["JPEG", "PNG", "BMP", "TIFF"])
def test_known_formats_are_read_whatever_they_are_called(strict_client, format_name):
    assert upload(strict_client, picture(format_name)).json()["width"] == 64


@pytest.mark.parametrize("format_name", ["GIF", "WEBP", "PDF", "ICO"])
def test_other_formats_are_refused(strict_client, format_name):
    answer = upload(strict_client, picture(format_name))
    assert answer.status_code == 422
    assert answer.json() == {
        "success": False, "error": "The file is no JPEG, PNG, BMP or TIFF image",
    }  # fmt: skip


@pytest.mark.parametrize(
    "data",
    [b"x", b"\xff\xd8\xff", b"<svg/>", b"%PDF-1.7", b"\0" * 10000, b"\x89PNG\r\n\x1a\n", b"BM",
     b"II*\0\x08\0\0\0\xff\xff", b"GIF89a", b"http://example.com/a.jpg", b"/etc/passwd"],
)  # fmt: skip
def test_what_is_no_image_is_refused(strict_client, data):
    assert upload(strict_client, data).status_code == 422


def test_an_empty_image_is_refused(strict_client):
    assert upload(strict_client, b"").status_code == 400


def test_a_photo_that_is_cut_off_is_refused_or_read_never_a_failure(strict_client):
    whole = picture("PNG", 1000, 1000)
    for cut in (30, 60, len(whole) // 2, len(whole) - 5):
        assert upload(strict_client, whole[:cut]).status_code in (200, 422)
    whole = jpeg(1000, 1000)
    for cut in (30, 300, len(whole) // 2):
        assert upload(strict_client, whole[:cut]).status_code in (200, 422)


@pytest.mark.parametrize("side", [3000, 30_000, 2**31 - 1])
def test_a_small_file_with_too_many_pixels_is_refused_before_it_is_unpacked(strict_client, side):
    memory = strict_client.get("/api/health?detailed=true").json()["health_check"]["memory_mb"]
    answer = upload(strict_client, png_bomb(side))
    assert answer.status_code in (413, 422)
    if side < 2**31 - 1:
        assert "at most 4 megapixels" in answer.json()["error"]
    after = strict_client.get("/api/health?detailed=true").json()["health_check"]["memory_mb"]
    assert after < memory + 40


def test_an_upload_that_says_it_is_too_large_is_refused_at_once(strict_server, strict_client):
    with strict_server.connect() as connection:
        connection.sendall(
            b"POST /api/anpr HTTP/1.1\r\nHost: localhost\r\nContent-Length: 999999999\r\n"
            b"Content-Type: multipart/form-data; boundary=x\r\n\r\n"
        )
        assert connection.makefile("rb").readline().split()[1] == b"413"


@pytest.mark.parametrize("size", [2_100_000, 20_000_000])
def test_an_upload_that_is_too_large_gets_its_answer_although_it_sends_on(strict_client, size):
    answer = upload(strict_client, b"x" * size)
    assert answer.status_code == 413
    assert "at most 2 MB" in answer.json()["error"]


def test_an_upload_of_unknown_length_is_cut_at_the_limit(strict_client):
    def endless():
        yield b'--x\r\nContent-Disposition: form-data; name="image"; filename="a"\r\n\r\n'
        for _ in range(200):
            yield b"y" * 50_000

    headers = {"Content-Type": "multipart/form-data; boundary=x"}
    assert strict_client.post("/api/anpr", content=endless(), headers=headers).status_code == 413


def test_a_long_json_body_is_refused(strict_client):
    assert strict_client.put("/api/region", json={"region": "x" * 100_000}).status_code == 413


@pytest.mark.parametrize(
    ("content_type", "body"),
    [
        ("multipart/form-data", b"--x\r\n"),
        ("multipart/form-data; boundary=x", b""),
        ("multipart/form-data; boundary=x", b"no boundary anywhere"),
        ("multipart/form-data; boundary=x", b"--x\r\nbroken\r\n\r\n"),
        ("multipart/form-data; boundary=x", b'--x\r\nContent-Disposition: form-data; name="image"'),
        ("multipart/form-data; boundary=" + "x" * 3000, b"--x--"),
        ("application/json", b'{"image": "/etc/passwd"}'),
        ("application/x-www-form-urlencoded", b"image=http%3A%2F%2Fexample.com%2Fa.jpg"),
        ("text/plain", b"image"),
        ("image/jpeg", jpeg()),
    ],
)
def test_a_body_that_is_no_upload_is_refused(strict_client, content_type, body):
    headers = {"Content-Type": content_type}
    answer = strict_client.post("/api/anpr", content=body, headers=headers)
    assert answer.status_code in (400, 422)
    assert answer.json()["success"] is False


def test_a_multipart_body_that_is_cut_off_is_not_read_as_whole(strict_client):
    body = (
        b'--x\r\nContent-Disposition: form-data; name="image"; filename="a.jpg"\r\n'
        b"Content-Type: image/jpeg\r\n\r\n" + jpeg()[:-200]
    )
    headers = {"Content-Type": "multipart/form-data; boundary=x"}
    assert strict_client.post("/api/anpr", content=body, headers=headers).status_code in (400, 422)


def test_the_image_must_be_a_file_with_that_name(strict_client):
    files = {"photo": ("a.jpg", jpeg(), "image/jpeg")}
    answer = strict_client.post("/api/anpr", files=files)
    assert (answer.status_code, answer.json()["error"]) == (422, "image: Field required")
    assert strict_client.post("/api/anpr", data={"image": "text"}).status_code == 422


@pytest.mark.parametrize("name", ["../../etc/passwd", "a\u0000b.jpg", "ü漢.jpg", "x" * 5000, ""])
def test_the_file_name_is_only_a_name(strict_client, name):
    files = {"image": (name, jpeg(), "image/jpeg")}
    assert strict_client.post("/api/anpr", files=files).status_code in (200, 400, 422)
