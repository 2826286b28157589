"""`server detect`: uploads on the wire, byte by byte, and what is printed about the answers."""

import re
import time

import pytest
from processes import free_port
from scripted_server import CUT, answer, http

PHOTO = bytes(range(256)) * 3


@pytest.fixture
def photo(zv):
    path = zv.folder / "car.jpg"
    path.write_bytes(PHOTO)
    return path


def plates(*results, **more):
    return answer({"results": list(results), **more})


def multipart(boundary, name, content, *fields):
    """The body that is expected: the file before the fields."""
    body = (
        f'--{boundary}\r\nContent-Disposition: form-data; name="image"; filename="{name}"\r\n'
        "Content-Type: image/jpeg\r\n\r\n"
    ).encode() + content
    body += b"\r\n"
    for field, value in fields:
        body += f"--{boundary}\r\n".encode()
        body += f'Content-Disposition: form-data; name="{field}"\r\n\r\n{value}\r\n'.encode()
    return body + f"--{boundary}--\r\n".encode()


def boundary_of(request):
    kind = request.headers["content-type"]
    assert kind.startswith("multipart/form-data; boundary=----Boundary")
    return kind.split("=", 1)[1]


def test_the_upload_is_exact(ask, server, photo):
    server.answers["/api/anpr"] = plates()
    ask("detect", "car.jpg")
    (request,) = server.requests
    assert request.line == "POST /api/anpr HTTP/1.1"
    boundary = boundary_of(request)
    assert re.fullmatch("----Boundary[0-9]{13}", boundary)
    assert abs(int(boundary[12:]) / 1000 - time.time()) < 60
    assert request.body == multipart(boundary, "car.jpg", PHOTO)
    assert request.headers["content-length"] == str(len(request.body))
    assert request.headers["connection"] == "close"
    assert "x-zv-anpr-token" not in request.headers


def test_region_and_mmc_choose_field_and_path(ask, server, photo):
    server.answers["/api/anpr/mmc"] = plates()
    ask("detect", "--mmc", "--region", "kr", str(photo))
    (request,) = server.requests
    assert request.body == multipart(boundary_of(request), "car.jpg", PHOTO, ("region", "kr"))


def test_an_empty_region_is_not_sent(ask, server, photo):
    server.answers["/api/anpr"] = plates()
    ask("detect", "--region", "", "car.jpg")
    (request,) = server.requests
    assert request.body == multipart(boundary_of(request), "car.jpg", PHOTO)


def test_every_format_goes_as_jpeg_and_names_as_they_are(ask, server, zv):
    (zv.folder / "ä 'x'.PNG").write_bytes(b"png")
    server.answers["/api/anpr"] = plates()
    ask("detect", "ä 'x'.PNG")
    (request,) = server.requests
    assert request.body == multipart(boundary_of(request), "ä 'x'.PNG", b"png")


def test_no_name_breaks_out_of_its_line(ask, server, zv):
    name = 'q"; x="\r\nContent-Type: x\r\n\r\ninjected.jpg'
    (zv.folder / name).write_bytes(b"jpg")
    server.answers["/api/anpr"] = plates()
    ask("detect", name)
    (request,) = server.requests
    escaped = 'q"; x="%0D%0AContent-Type: x%0D%0A%0D%0Ainjected.jpg'
    assert request.body == multipart(boundary_of(request), escaped, b"jpg")


def test_plates_are_printed_with_percentages_as_sent(ask, server, photo):
    server.answers["/api/anpr"] = plates(
        {"plate_text": "AB123", "confidence": 96.6},
        {"plate_text": "CD456", "confidence": 0.97},
        {"plate_text": "EF789", "confidence": 62.5},
        {},
        processing_sec=0.125,
    )
    assert ask("detect", "car.jpg") == (
        "  car.jpg: 4 plate(s)  [0.12s]\n"
        "    AB123 (97%)\n    CD456 (1%)\n    EF789 (62%)\n    ? (0%)\n"
    )


def test_half_a_surrogate_pair_is_a_text_like_any_other(ask, server, photo):
    server.answers["/api/anpr"] = http(r'{"results": [{"plate_text": "A\ud83d", "x\udc00": 1}]}')
    assert ask("detect", "car.jpg") == "  car.jpg: 1 plate(s)  [0.00s]\n    A\\ud83d (0%)\n"


@pytest.mark.parametrize(
    ("vehicle", "suffix"),
    [
        ({"mmc_make": "Kia", "mmc_color": "red", "mmc_model": "Rio"}, "  red Kia Rio"),
        ({"mmc_make": "Kia", "mmc_color": "red", "mmc_model": ""}, "  red Kia"),
        ({"mmc_make": "Kia"}, "  Kia"),
        ({"mmc_make": "Kia", "mmc_color": None}, "  Kia"),
        ({"mmc_make": "", "mmc_model": "Rio", "mmc_color": "red"}, ""),
        ({"mmc_make": None, "mmc_model": "Rio"}, ""),
        ({"mmc_model": "Rio"}, ""),
    ],
)
def test_the_vehicle_is_named_only_with_a_make(ask, server, photo, vehicle, suffix):
    server.answers["/api/anpr/mmc"] = plates({"plate_text": "A", "confidence": 99, **vehicle})
    assert ask("detect", "car.jpg", "--mmc").splitlines()[1] == f"    A (99%){suffix}"


@pytest.mark.parametrize("value", [{}, {"results": []}, {"results": None}])
def test_no_plates(ask, server, photo, value):
    server.answers["/api/anpr"] = answer(value)
    assert ask("detect", "car.jpg") == "  car.jpg: (no plates)  [0.00s]\n"


def test_several_images_are_counted_even_when_skipped(ask, server, zv, photo):
    (zv.folder / "note.txt").write_text("x")
    server.answers["/api/anpr"] = plates(processing_sec=1)
    assert ask("detect", "note.txt", "car.jpg") == (
        "Skipping note.txt: unsupported format\n"
        "  car.jpg: (no plates)  [1.00s]\n"
        "\nTotal: 2 images processed\n"
    )
    assert len(server.requests) == 1


def test_patterns_expand_and_duplicates_stay(ask, server, zv, photo):
    (zv.folder / "van.jpg").write_bytes(b"v")
    server.answers["/api/anpr"] = plates()
    out = ask("detect", "*.jpg", "car.jpg")
    assert out.count("car.jpg: (no plates)") == 2
    assert out.count("van.jpg: (no plates)") == 1
    assert out.endswith("\nTotal: 3 images processed\n")


def test_a_name_with_brackets_that_exists_is_taken_as_it_is(ask, server, zv):
    (zv.folder / "a[1].jpg").write_bytes(b"x")
    server.answers["/api/anpr"] = plates()
    assert ask("detect", "a[1].jpg") == "  a[1].jpg: (no plates)  [0.00s]\n"


def test_what_a_name_with_brackets_matches_is_taken_before_it(ask, server, zv):
    (zv.folder / "a[1].jpg").write_bytes(b"x")
    (zv.folder / "a1.jpg").write_bytes(b"other")
    server.answers["/api/anpr"] = plates()
    assert ask("detect", "a[1].jpg") == "  a1.jpg: (no plates)  [0.00s]\n"


def test_what_a_pattern_matches_is_sorted(ask, server, zv):
    names = [f"{i:02}.jpg" for i in range(20)]
    for name in names[::-1] + names[::3]:
        (zv.folder / name).write_bytes(b"x")
    server.answers["/api/anpr"] = plates()
    lines = ask("detect", "*.jpg").splitlines()
    assert [line.split(":")[0].strip() for line in lines[:20]] == names


def test_nothing_found(zv):
    assert zv("server", "detect", "*.jpg", "gone.png", "").out == (
        "Warning: *.jpg not found, skipping\n"
        "Warning: gone.png not found, skipping\n"
        "Warning:  not found, skipping\n"
        "No images provided.\n"
        "Usage: zv-anpr server detect <image> [image2 ...] [--region korea] [--mmc]\n"
    )


def test_a_folder_with_an_image_name_is_one_failure_among_others(ask, server, zv, photo):
    (zv.folder / "box.jpg").mkdir()
    server.answers["/api/anpr"] = plates()
    out = ask("detect", "box.jpg", "car.jpg")
    assert out.startswith("  box.jpg: Error - [Errno 21] Is a directory")
    assert "  car.jpg: (no plates)  [0.00s]\n\nTotal: 2 images processed\n" in out


def test_every_image_is_tried_when_the_server_is_down(zv, photo):
    (zv.folder / "van.jpg").write_bytes(b"v")
    result = zv("server", "detect", "car.jpg", "van.jpg", "--port", str(free_port()))
    reason = "Error - server not reachable ([Errno 111] Connection refused)"
    assert result.out == f"  car.jpg: {reason}\n  van.jpg: {reason}\n\nTotal: 2 images processed\n"
    assert result.status == 0


def test_an_unknown_host_is_not_reachable(zv, photo):
    out = zv("server", "detect", "car.jpg", "--host", "no-such-host.invalid").out
    assert out.startswith("  car.jpg: Error - server not reachable (")


@pytest.mark.parametrize(
    ("reply", "text"),
    [
        (http("{}", "404 Not Found"), "HTTP Error 404: Not Found"),
        (http("oops", "500 Internal Server Error"), "HTTP Error 500: Internal Server Error"),
        (http("", "302 Found", "Location: /api/anpr"), "HTTP Error 302: Found"),
        (CUT, "the server closed the connection without an answer"),
        (b"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{", "the connection was cut in the middle"),
        (http("no json"), "the answer is not JSON"),
        (http(b'{"results": []} x'), "the answer is not JSON"),
        (http(b'{"results": "\xff"}'), "the answer is not JSON"),
        (answer([1]), "'list' object has no attribute 'get'"),
        (answer({"results": 3}), "object of type 'int' has no len()"),
        (answer({"processing_sec": None}), "unsupported format string passed to NoneType"),
        (answer({"processing_sec": "1"}), "Unknown format code 'f' for object of type 'str'"),
    ],
)
def test_one_failure_does_not_stop_the_rest(ask, server, zv, photo, reply, text):
    (zv.folder / "van.jpg").write_bytes(b"v")
    server.answers["/api/anpr"] = [reply, plates()]
    first, *rest = ask("detect", "car.jpg", "van.jpg").splitlines()
    assert first.startswith(f"  car.jpg: Error - {text}")
    assert rest == ["  van.jpg: (no plates)  [0.00s]", "", "Total: 2 images processed"]


def test_lines_before_a_failure_stay(ask, server, photo):
    server.answers["/api/anpr"] = plates(
        {"plate_text": "A"}, {"confidence": "high"}, {"plate_text": "B"}
    )
    assert ask("detect", "car.jpg") == (
        "  car.jpg: 3 plate(s)  [0.00s]\n    A (0%)\n"
        "  car.jpg: Error - Unknown format code 'f' for object of type 'str'\n"
    )


def test_a_big_photo_arrives_whole(ask, server, zv):
    content = bytes(range(256)) * 40_000
    (zv.folder / "big.jpg").write_bytes(content)
    server.answers["/api/anpr"] = plates()
    ask("detect", "big.jpg")
    (request,) = server.requests
    assert request.body == multipart(boundary_of(request), "big.jpg", content)
