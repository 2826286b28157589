"""`read`: lines, totals, the JSON file, and what happens to inputs that are no images."""

import json
import os

import pytest

PLATE = '{"ocr": "12AB3456", "ocr_conf": 97.5, "ltrb": [10, 20, 110, 60], "ltrb_conf": 0.88}'


def answering(zv, results: str) -> None:
    zv.script(f"def answer(path):\n    return {{'results': {results}}}\n")


@pytest.fixture
def car(zv):
    path = zv.folder / "car.jpg"
    path.touch()
    return path


def test_the_whole_report_of_one_image(zv, car):
    answering(zv, f"[{PLATE}]")
    assert zv("read", "car.jpg") == zv("car.jpg")
    assert zv("read", "car.jpg").out == (
        "Processing 1 images | 640p_fp32/fp32 | Conf: 0.5\n"
        "car.jpg: 1 plates: 12AB3456 (0.97)\n"
        "\nTotal: 1 plates from 1 images\n"
    )


def test_the_engine_is_called_as_agreed_and_built_once(zv, car):
    (zv.folder / "b.png").touch()
    zv("read", "car.jpg", "b.png", "--region", "kr", "--backend", "cuda", "--ocr-model", "int8")
    assert zv.calls() == [
        ["to_internal_region", ["kr"], {}],
        ["detector", ["640p_fp32"], {"backend": "cuda"}],
        ["ocr", ["int8", "internal-kr"], {"backend": "cuda"}],
        ["read", [str(car)], {}],
        ["read", [str(zv.folder / "b.png")], {}],
    ]


def test_several_plates_share_a_line_and_weak_ones_are_dropped(zv, car):
    answering(zv, f"[{PLATE}, {{'ocr': 'LOW', 'ocr_conf': 0.49}}, {{'ocr': 'B', 'ocr_conf': 0.5}}]")
    assert "car.jpg: 2 plates: 12AB3456 (0.97), B (0.50)\n" in zv("car.jpg").out


def test_the_threshold_is_inclusive(zv, car):
    answering(zv, "[{'ocr': 'A', 'ocr_conf': 0.9}]")
    assert "1 plates: A (0.90)" in zv("car.jpg", "--confidence", "0.9").out
    assert "No plates" in zv("car.jpg", "--confidence", "0.91").out


@pytest.mark.parametrize(
    "answer", ["None", "{}", "{'other': 1}", "{'results': []}", "{'results': ()}"]
)
def test_answers_without_plates(zv, car, answer):
    zv.script(f"def answer(path):\n    return {answer}\n")
    status, out, _ = zv("car.jpg", "--json", "r.json")
    assert status == 0
    assert "car.jpg: No plates\n" in out
    assert (zv.folder / "r.json").read_bytes() == b"[]"
    assert out.endswith(
        f"\nResults saved to: {zv.folder / 'r.json'}\n\nTotal: 0 plates from 1 images\n"
    )


def test_the_json_file_to_the_byte(zv, car):
    answering(
        zv, f"[{PLATE}, {{'ocr': '京A😀\"', 'ocr_conf': 1, 'ltrb': (1, 2.0, 1e16, 10**20)}}, {{}}]"
    )
    zv("car.jpg", "--json", "r.json", "--confidence", "0")
    name = json.dumps(str(car))
    assert (zv.folder / "r.json").read_text() == (
        '[\n  {\n    "ocr_text": "12AB3456",\n    "ocr_conf": 0.975,\n'
        '    "bbox": [\n      10,\n      20,\n      110,\n      60\n    ],\n'
        f'    "bbox_conf": 0.88,\n    "filename": {name}\n  }},\n'
        '  {\n    "ocr_text": "\\u4eacA\\ud83d\\ude00\\"",\n    "ocr_conf": 1,\n'
        '    "bbox": [\n      1,\n      2.0,\n      1e+16,\n      100000000000000000000\n    ],\n'
        f'    "bbox_conf": 0,\n    "filename": {name}\n  }},\n'
        '  {\n    "ocr_text": "",\n    "ocr_conf": 0,\n    "bbox": [],\n    "bbox_conf": 0,\n'
        f'    "filename": {name}\n  }}\n]'
    )


@pytest.mark.parametrize(
    "given, kept",
    [("1", "1"), ("95", "0.95"), ("1.0001", "0.010001"), ("0", "0"), ("0.3", "0.3"), ("1.0", "1.0"),
     ("1.5", "0.015"), ("100", "1.0"), ("True", "true"), ("10**30", "1e+28")],
)  # fmt: skip
def test_confidences_above_one_are_percentages(zv, car, given, kept):
    answering(zv, f"[{{'ocr_conf': {given}, 'ltrb_conf': {given}}}]")
    zv("car.jpg", "--json", "r.json", "--confidence", "0")
    text = (zv.folder / "r.json").read_text()
    assert f'"ocr_conf": {kept},\n' in text
    assert f'"bbox_conf": {kept},\n' in text


def test_each_confidence_is_looked_up_twice(zv, car):
    zv.script(
        "from zelvoran_anpr._record import record\n"
        "class Plate(dict):\n"
        "    def get(self, *args):\n"
        "        record('get', args, {})\n"
        "        return super().get(*args)\n"
        "def answer(path):\n"
        "    return {'results': [Plate(ocr_conf=95)]}\n"
    )
    zv("car.jpg")
    assert [call[1] for call in zv.calls() if call[0] == "get"] == [
        ["ocr", ""], ["ocr_conf", 0], ["ocr_conf", 0], ["ltrb", []],
        ["ltrb_conf", 0], ["ltrb_conf", 0],
    ]  # fmt: skip


@pytest.mark.parametrize(
    "raised, shown",
    [
        ("ValueError('unknown model')", "unknown model"),
        ("KeyError('ocr')", "'ocr'"),
        ("RuntimeError()", ""),
        ("RuntimeError('one\\ntwo')", "one\ntwo"),
        ("ImportError('no cuda')", "no cuda"),
        ("MemoryError('too big')", "too big"),
        ("AssertionError('größer')", "größer"),
    ],
)
def test_a_failing_image_is_reported_and_the_next_one_read(zv, car, raised, shown):
    (zv.folder / "b.jpg").touch()
    zv.script(
        f"def answer(path):\n    if 'car' in path: raise {raised}\n"
        f"    return {{'results': [{PLATE}]}}\n"
    )
    status, out, err = zv("car.jpg", "b.jpg")
    assert status == 0
    assert f"car.jpg: Error: {shown}\nb.jpg: 1 plates: 12AB3456 (0.97)\n" in out
    assert out.endswith("\nTotal: 1 plates from 2 images\n")
    assert err == ""


def test_a_record_that_breaks_half_way_discards_the_image(zv, car):
    answering(zv, f"[{PLATE}, {{'ocr_conf': 'high'}}]")
    out = zv("car.jpg").out
    assert "car.jpg: Error: '>' not supported between instances of 'str' and 'int'\n" in out
    assert out.endswith("Total: 0 plates from 1 images\n")


def test_an_engine_that_cannot_be_built_fails_every_image_alike(zv, car):
    (zv.folder / "b.jpg").touch()
    zv.script("def on_ocr():\n    raise ValueError('unknown region')\n")
    out = zv("car.jpg", "b.jpg").out
    assert "car.jpg: Error: unknown region\nb.jpg: Error: unknown region\n" in out


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


@pytest.mark.parametrize(
    "text", ["\\ud83d", "A\\udc00B\\ud83d\\udc80", "\\udc80", "DEL\\x7f", "\\x00\\x1f\\x80\\u2028"]
)
def test_texts_that_are_hardly_texts_are_escaped_as_they_are(zv, car, text):
    """Halves of surrogate pairs, undecodable bytes and controls, alone and mixed."""
    answering(zv, f"[{{'ocr': '{text}', 'ocr_conf': 1}}]")
    zv("car.jpg", "--json", "r.json")
    plain = text.encode().decode("unicode_escape")
    assert f'"ocr_text": {json.dumps(plain)},\n' in (zv.folder / "r.json").read_text("ascii")


def test_half_a_surrogate_pair_is_printed_as_one_escape(zv, car):
    zv.script("def answer(path):\n    raise ValueError('no \\ud83d here')\n")
    assert "car.jpg: Error: no \\ud83d here\n" in zv("car.jpg").out


def test_bytes_of_the_engine_are_no_text(zv, car):
    answering(zv, "[{'ocr': b'AB', 'ocr_conf': 1}]")
    out = zv("car.jpg", "--json", "r.json").out
    assert "car.jpg: 1 plates: b'AB' (1.00)\n" in out
    assert "\nError: Failed to save JSON results\n" in out


def test_json_through_a_link_names_the_file_that_is_written(zv, car):
    (zv.folder / "link.json").symlink_to("chain.json")
    (zv.folder / "chain.json").symlink_to("there.json")
    for _ in range(2):  # the file is created, and then there
        out = zv("car.jpg", "--json", "link.json").out
        assert f"\nResults saved to: {zv.folder / 'there.json'}\n" in out
        assert (zv.folder / "there.json").read_text() == "[]"


def test_json_through_links_without_an_end_is_told(zv, car):
    (zv.folder / "a.json").symlink_to("b.json")
    (zv.folder / "b.json").symlink_to("a.json")
    (zv.folder / "c.json").symlink_to("gone/../c.json")
    for name in ["a.json", "c.json"]:
        assert "\nError: Failed to save JSON results\n" in zv("car.jpg", "--json", name).out


def test_json_that_cannot_be_written_is_told_and_the_total_still_printed(zv, car):
    out = zv("car.jpg", "--json", "no/such/folder/r.json").out
    assert out.endswith("\nError: Failed to save JSON results\n\nTotal: 0 plates from 1 images\n")


def test_json_to_a_full_disk_is_told(zv, car):
    answering(zv, f"[{PLATE}]")
    assert "\nError: Failed to save JSON results\n" in zv("car.jpg", "--json", "/dev/full").out


def test_an_empty_json_name_is_none(zv, car):
    status, out, _ = zv("car.jpg", "--json", "", "--output", "")
    assert status == 0
    assert "saved" not in out


def test_values_of_the_array_library_arrive_as_numbers(zv, car):
    pytest.importorskip("numpy")
    zv.script(
        "import numpy as np\n"
        "def answer(path):\n"
        "    return {'results': [{'ocr': np.str_('A'), 'ocr_conf': np.float64(0.75),\n"
        "        'ltrb': np.array([1, 2, 3, 4]), 'ltrb_conf': np.int64(90)}], (1, 2): 'odd key'}\n"
    )
    out = zv("car.jpg", "--json", "r.json").out
    assert "1 plates: A (0.75)" in out
    plate = json.loads((zv.folder / "r.json").read_text())[0]
    assert (plate["bbox"], plate["bbox_conf"]) == ([1, 2, 3, 4], 0.9)
    assert '"bbox_conf": 0.9,' in (zv.folder / "r.json").read_text()


def test_text_that_is_no_string_is_shown_plainly(zv, car):
    answering(zv, "[{'ocr': None, 'ocr_conf': 1}, {'ocr': 7, 'ocr_conf': 1}]")
    assert "2 plates: None (1.00), 7 (1.00)\n" in zv("car.jpg").out
