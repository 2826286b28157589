"""`read --json`: the file to the byte, where it is written, and what happens when it cannot be."""

import json

import pytest
from engine_answers import PLATE, answering


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
