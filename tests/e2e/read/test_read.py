"""`read`: lines, totals, and what the engine is asked and may answer."""

import json

import pytest
from engine_answers import PLATE, answering


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


def test_text_that_is_no_string_is_shown_plainly(zv, car):
    answering(zv, "[{'ocr': None, 'ocr_conf': 1}, {'ocr': 7, 'ocr_conf': 1}]")
    assert "2 plates: None (1.00), 7 (1.00)\n" in zv("car.jpg").out
