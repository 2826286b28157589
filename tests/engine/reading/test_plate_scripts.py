"""Scripts: which a region's plates show, and which texts could be a plate's of one country."""

import numpy as np
import pytest
from zelvoran_anpr.reading import plate_scripts
from zelvoran_anpr.reading.plate_scripts import allowed, is_of_one_country
from zelvoran_anpr.reading.plate_text import PlateText
from zelvoran_anpr.reading.voting import text_of


@pytest.mark.parametrize(
    ("region", "left"),
    [("univ", "A1京가さ品"), ("kr", "A1가"), ("cn", "A1京品"), ("jp", "A1京さ品"), ("na", "A1"),
     ("br", "A1"), ("de", "A1")],
)  # fmt: skip
def test_a_region_leaves_its_scripts(region, left):
    characters = "A1京가さ品"
    kept = allowed(characters, region)
    assert kept[0] == 1
    assert "".join(c for c, one in zip(characters, kept[1:], strict=True) if one) == left


def test_what_a_region_strikes_out_leaves_the_reading_unsure():
    cells = np.array([[0.0, 0.1, 0.9], [1.0, 0, 0]])
    text = text_of(cells * allowed("A京", "de"), "A京")
    assert (text.text, text.confidence) == ("A", pytest.approx(0.1))


@pytest.mark.parametrize(
    "text", ["WSG979", "", "京A12345", "粤BD12345", "粤Z123港", "12가3456", "서울12가3456",
             "品川500さ1234", "いわき33あ1"]
)  # fmt: skip
def test_texts_of_one_country(text):
    assert is_of_one_country(text)


@pytest.mark.parametrize("text", ["沪WSG979가", "4B2공1875", "津K40M3L가", "琼", "新12345", "가가"])
def test_scripts_in_places_where_no_country_has_them(text):
    assert not is_of_one_country(text)


@pytest.mark.parametrize(
    ("read", "written"), [("皖AIO234", "皖A10234"), ("皖A12345", "皖A12345"), ("IO1234", "IO1234")]
)
def test_chinese_serials_have_neither_o_nor_i(read, written):
    text = plate_scripts.as_written(PlateText(read, (0.9,) * len(read)), "univ")
    assert (text.text, text.confidence) == (written, 0.9)


def test_a_chinese_plate_without_its_province_is_never_sure():
    text = PlateText("A12345", (0.9,) * 6)
    assert plate_scripts.as_written(text, "cn").confidence < 0.5
    assert plate_scripts.as_written(text, "univ").confidence == 0.9


def test_china_strikes_out_o_and_i():
    assert plate_scripts.allowed("AIO0", "cn").tolist() == [1, 1, 0, 0, 1]
    assert plate_scripts.allowed("AIO0", "univ").tolist() == [1, 1, 1, 1, 1]


def test_a_japanese_plate_whose_upper_row_is_unread_is_one_of_japan():
    assert plate_scripts.is_of_one_country("さ1234")


def _japanese(upper: float, lower: float) -> PlateText:
    return PlateText("品川500さ1234", (upper,) * 5 + (lower,) * 5, rows=(0,) * 5 + (1,) * 5)


def test_a_japanese_upper_row_that_cannot_be_read_is_left_out_and_the_rest_is_unsure():
    text = plate_scripts.without_unread_upper_row(_japanese(0.2, 0.9))
    assert (text.text, text.confidence, text.rows) == ("さ1234", 0.49, (1,) * 5)


@pytest.mark.parametrize(("upper", "lower"), [(0.5, 0.9), (0.2, 0.2)])
def test_else_a_japanese_plate_stays_whole(upper, lower):
    read = _japanese(upper, lower)
    assert plate_scripts.without_unread_upper_row(read) is read


def test_a_latin_plate_of_two_rows_stays_whole():
    read = PlateText("AB1234", (0.1, 0.9, 0.9, 0.9, 0.9, 0.9), rows=(0, 0, 1, 1, 1, 1))
    assert plate_scripts.without_unread_upper_row(read) is read
