"""What becomes of finds and readings: whole pictures, cut plates, records for programs."""

import numpy as np
import pytest
from zelvoran_anpr.reading import read_plates
from zelvoran_anpr.reading.plate_box import PlateBox
from zelvoran_anpr.reading.plate_text import PlateText


def _box(left, top, right, bottom, sure=0.9) -> PlateBox:
    corners = [[left, top], [right, top], [right, bottom], [left, bottom]]
    return PlateBox(np.array(corners, float), sure)


class Scripted:
    """Finds the given boxes; reads the text given for a box, else the one for the whole picture."""

    region = "univ"

    def __init__(self, finds: list[tuple[PlateBox, PlateText]], whole: PlateText | None = None):
        self.finds, self.whole, self.asked = finds, whole or PlateText("", ()), 0

    def detect(self, _):
        return [box for box, _ in self.finds]

    def read(self, _, box, region):
        self.asked += 1
        return next((text for one, text in self.finds if one is box), self.whole)


def _text(text: str, sure: float) -> PlateText:
    return PlateText(text, (sure,) * len(text))


def _read(engine: Scripted, shape=(60, 180, 3), region=None) -> list[dict]:
    return read_plates(engine, engine, np.zeros(shape, np.uint8), region)["results"]


def test_a_picture_that_is_a_plate_is_read_as_a_whole():
    [result] = _read(Scripted([], _text("AB123C", 0.8)))
    assert (result["ocr"], result["ocr_conf"]) == ("AB123C", 0.8)
    assert (result["ltrb"], result["ltrb_conf"]) == ([0, 0, 180, 60], 0.8)


@pytest.mark.parametrize("whole", [_text("AB123C", 0.49), _text("AB", 0.9), _text("20240131", 0.9)])
def test_a_picture_is_no_plate_unless_it_is_read_surely(whole):
    assert _read(Scripted([], whole)) == []


def test_a_tall_picture_is_no_plate():
    assert _read(Scripted([], _text("AB123C", 0.9)), shape=(300, 100, 3)) == []


def test_the_whole_picture_is_not_read_where_a_plate_is_sure():
    engine = Scripted([(_box(20, 10, 90, 40), _text("AB123C", 0.9))], _text("XY999Z", 0.99))
    assert [r["ocr"] for r in _read(engine)] == ["AB123C"]
    assert engine.asked == 1


def test_the_whole_picture_stands_for_an_unsure_part_of_it():
    engine = Scripted([(_box(20, 10, 90, 40), _text("B123", 0.3))], _text("AB123C", 0.9))
    assert [r["ocr"] for r in _read(engine)] == ["AB123C"]


def test_a_plate_that_the_edge_cuts_is_never_sure():
    engine = Scripted([(_box(-30, 10, 90, 40), _text("B123CD", 0.95))])
    assert [(r["ocr"], r["ocr_conf"]) for r in _read(engine)] == [("B123CD", 0.5)]


def test_one_weak_character_does_not_drop_a_plate_but_two_do():
    one = PlateText("AB123", (0.1, 0.9, 0.9, 0.9, 0.9))
    assert [r["ocr_conf"] for r in _read(Scripted([(_box(20, 10, 90, 40), one)]))] == [0.1]
    two = PlateText("AB123", (0.1, 0.15, 0.9, 0.9, 0.9))
    assert _read(Scripted([(_box(20, 10, 90, 40), two)])) == []


def test_a_record_tells_programs_more_than_the_text():
    text = PlateText("SK123AB", (0.9,) * 7, (("SK123AB", 0.8), ("SK123A8", 0.2)), {"eup": 0.7})
    [result] = _read(Scripted([(_box(20, 10, 90, 40), text)]))
    assert result["corners"] == [[20, 10], [90, 10], [90, 40], [20, 40]]
    assert result["char_confs"] == [0.9] * 7
    assert result["candidates"] == [
        {"text": "SK123AB", "share": 0.8}, {"text": "SK123A8", "share": 0.2}
    ]  # fmt: skip
    origin = result["origin"]
    assert (origin["group"], origin["confidence"]) == ("eup", 0.7)
    assert {"sk", "fr"} <= set(origin["countries"]) and "es" not in origin["countries"]


def test_without_groups_no_origin_is_told():
    [result] = _read(Scripted([(_box(20, 10, 90, 40), _text("AB123C", 0.9))]))
    assert result["origin"] is None
