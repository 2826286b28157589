"""An engine with the door for photos to come is told of them; all else stays as it is."""

import pytest
from engine_answers import PLATE, answering

DOOR = """

def zelvoran_anpr_expect_image_files(*args, **keywords):
    detector, ocr, paths = args
    assert isinstance(detector, zv_anpr_detector_v17) and isinstance(ocr, zv_anpr_ocr_v17)
    record("expect", (paths,), keywords)
    getattr(script, "on_expect", lambda: None)()
"""


@pytest.fixture
def with_door(zv):
    file = zv.engine_folder / "zelvoran_anpr" / "__init__.py"
    zv.engine_file("__init__.py", file.read_text() + DOOR)
    return zv


def _photos(zv, *names: str) -> list[str]:
    for name in names:
        (zv.folder / name).touch()
    return [str(zv.folder / name) for name in names]


def _kinds(zv) -> list[str]:
    return [kind for kind, *_ in zv.calls()]


def test_it_is_told_once_before_the_first_photo_and_asked_for_each(with_door):
    zv, photos = with_door, _photos(with_door, "a.jpg", "b.jpg", "ü.png")
    answering(zv, f"[{PLATE}]")
    assert "Total: 3 plates from 3 images" in zv("read", "a.jpg", "b.jpg", "ü.png").out
    assert _kinds(zv) == ["to_internal_region", "detector", "ocr", "expect", "read", "read", "read"]
    assert zv.calls()[3][1:] == [[photos], {}]
    assert [call[1][0] for call in zv.calls()[4:]] == photos


def test_of_a_single_photo_it_is_not_told(with_door):
    _photos(with_door, "a.jpg")
    with_door("a.jpg")
    assert _kinds(with_door) == ["to_internal_region", "detector", "ocr", "read"]


def test_a_door_that_fails_costs_nothing(with_door):
    _photos(with_door, "a.jpg", "b.jpg")
    answering(with_door, f"[{PLATE}]")
    without = with_door("a.jpg", "b.jpg")
    file = with_door.engine_folder / "zelvoran_anpr" / "_script.py"
    with_door.script(file.read_text() + "\ndef on_expect():\n    raise OSError('shut')\n")
    assert with_door("a.jpg", "b.jpg") == without
    assert _kinds(with_door).count("expect") == 2


def test_it_is_told_of_what_is_left_when_the_objects_could_not_be_built_at_once(with_door):
    photos = _photos(with_door, "a.jpg", "b.jpg", "c.jpg")
    with_door.script(
        "tries = []\n\ndef on_ocr():\n    tries.append(1)\n    if len(tries) == 1:\n"
        "        raise ValueError('not yet')\n\ndef answer(path):\n    return {'results': []}\n"
    )
    assert "a.jpg: Error: not yet\nb.jpg: No plates\n" in with_door(*photos).out
    [told] = [call for call in with_door.calls() if call[0] == "expect"]
    assert told[1] == [photos[1:]]


def test_another_engine_is_told_of_what_is_left_after_a_crash(with_door):
    photos = _photos(with_door, "a.jpg", "b.jpg", "c.jpg", "d.jpg")
    with_door.script(
        "import os\n\ndef answer(path):\n    if 'a.jpg' in path:\n        os._exit(3)\n"
        "    return {'results': []}\n"
    )
    assert "b.jpg: No plates" in with_door(*photos).out
    told = [call[1][0] for call in with_door.calls() if call[0] == "expect"]
    assert told == [photos, photos[1:]]


def test_packages_that_answer_for_missing_names_are_not_asked_for_it(zv):
    _photos(zv, "a.jpg", "b.jpg")
    file = zv.engine_folder / "zelvoran_anpr" / "__init__.py"
    wide = "\n\ndef __getattr__(name):\n    record('asked', (name,), {})\n    return record\n"
    zv.engine_file("__init__.py", file.read_text() + wide)
    zv("a.jpg", "b.jpg")
    assert not [call for call in zv.calls() if "expect" in str(call)]
