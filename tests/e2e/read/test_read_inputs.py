"""What `read` takes for a photo: files, folders, patterns, links and names of any bytes."""

import json
import os

import pytest
from engine_answers import PLATE, answering


def test_inputs_that_are_no_images_are_skipped(zv, car):
    (zv.folder / "scan.webp").touch()
    status, out, _ = zv("read", "nope.jpg", "scan.webp", "car.jpg")
    assert status == 0
    assert out.startswith("Skip: nope.jpg\nSkip: scan.webp\nProcessing 1 images")


def test_nothing_left_to_read_is_status_1(zv):
    status, out, _ = zv("read", "nope.jpg")
    assert (status, out) == (1, "Skip: nope.jpg\nNo valid files\n")


def test_a_folder_without_photos_is_no_valid_file(zv):
    (zv.folder / "empty").mkdir()
    status, out, _ = zv("read", "empty")
    assert (status, out) == (1, "No valid files\n")


def test_a_folder_is_read_by_suffix_without_its_sub_folders(zv):
    folder = zv.folder / "photos"
    (folder / "deep").mkdir(parents=True)
    for name in ["a.jpg", "b.JPG", "c.Jpg", "d.tif", "e.TIFF", "f.txt", "deep/g.jpg", ".h.png"]:
        (folder / name).touch()
    out = zv("read", "photos").out
    names = {line.split(": ")[0] for line in out.splitlines() if line.endswith("No plates")}
    assert names == {"a.jpg", "b.JPG", "d.tif", "e.TIFF", ".h.png"}
    assert next(call[1][0] for call in zv.calls() if call[0] == "read").startswith(str(folder))


def test_a_pattern_that_the_shell_left_alone_is_expanded_in_order(zv):
    for name in ["b.png", "a.png", "c.jpg", ".d.png"]:
        (zv.folder / name).touch()
    out = zv("read", "*.png", "*.gif").out
    assert out.startswith("Skip: *.gif\nProcessing 2 images")
    assert out.index("a.png: ") < out.index("b.png: ")


def test_the_same_file_twice_counts_twice(zv, car):
    answering(zv, f"[{PLATE}]")
    assert zv("car.jpg", "./car.jpg").out.endswith("Total: 2 plates from 2 images\n")


def test_links_are_resolved_before_suffix_and_name_are_looked_at(zv, car):
    (zv.folder / "link.txt").symlink_to(car)
    (zv.folder / "bad.jpg").symlink_to(zv.folder / "missing.jpg")
    (zv.folder / "loop.jpg").symlink_to("loop.jpg")
    out = zv("read", "link.txt", "bad.jpg", "loop.jpg").out
    assert "Skip: bad.jpg\nSkip: loop.jpg\n" in out
    assert "\ncar.jpg: No plates\n" in out


@pytest.mark.parametrize(
    "name", ["my car.jpg", 'it\'s "x".jpg', "line\nbreak.jpg", "ü.jpg", "[a].jpg"]
)
def test_any_file_name_is_passed_on_as_it_is(zv, name):
    (zv.folder / name).touch()
    answering(zv, f"[{PLATE}]")
    out = zv("read", name, "--json", "r.json").out
    assert f"{name}: 1 plates" in out
    assert json.loads((zv.folder / "r.json").read_text())[0]["filename"] == str(zv.folder / name)
    assert zv.calls()[-1] == ["read", [str(zv.folder / name)], {}]


def test_a_file_name_that_is_no_utf8_reaches_the_engine_whole(zv):
    path = os.fsencode(zv.folder) + b"/caf\xe9.jpg"
    os.close(os.open(path, os.O_CREAT | os.O_WRONLY))
    answering(zv, f"[{PLATE}]")
    status, out, _ = zv(b"read", b"caf\xe9.jpg", b"gone\xe9.jpg", b"--json", b"r.json")
    assert status == 0
    assert "Skip: gone\\udce9.jpg\n" in out
    assert "caf\\udce9.jpg: 1 plates" in out
    text = (zv.folder / "r.json").read_text(encoding="ascii")
    assert os.fsencode(json.loads(text)[0]["filename"]) == path
    assert os.fsencode(zv.calls()[-1][1][0]) == path
