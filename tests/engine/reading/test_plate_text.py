"""Formats, plausibility, alphabet and the vote of readings."""

import pytest
from zelvoran_anpr.reading.plate_alphabet import plate_characters
from zelvoran_anpr.reading.plate_formats import FORMATS, fit_to_format, matches_format
from zelvoran_anpr.reading.plate_plausibility import plausibility
from zelvoran_anpr.reading.plate_reader import _elected
from zelvoran_anpr.reading.plate_text import PlateText
from zelvoran_anpr.reading.text_recognition import ReadText
from zelvoran_anpr.region_countries import COUNTRIES


def plate(text: str, sure: float = 0.9, *rows: str) -> PlateText:
    return PlateText(text, (sure,) * len(text), rows or (text,))


def test_a_plate_is_as_sure_as_its_least_certain_character():
    assert PlateText("ABC", (0.9, 0.4, 0.8)).confidence == 0.4
    assert PlateText("", ()).confidence == 0


def test_formats_belong_to_countries_and_use_known_signs():
    assert set(FORMATS) <= set(COUNTRIES)
    assert {c for forms in FORMATS.values() for form in forms for c in form} <= set("LDH")


@pytest.mark.parametrize(
    ("read", "region", "written"),
    [
        ("RKO26AJ", "sk", "RK026AJ"),
        ("RK1OIA0", "sk", "RK101AO"),
        ("0KV8004", "br", "OKV8004"),
        ("RKO26AJ", "univ", "RKO26AJ"),
        ("RK8G6AJ", "sk", "RK8G6AJ"),
        ("OO1", "sk", "OO1"),
    ],
)
def test_a_known_format_decides_between_o_and_0_and_nothing_else(read, region, written):
    assert fit_to_format(plate(read), region).text == written


def test_two_formats_that_fit_equally_well_change_nothing():
    assert fit_to_format(plate("I2O34"), "lv").text == "I2O34"
    assert fit_to_format(plate("OO1234"), "pe").text == "OO1234"
    assert matches_format("OO1234", "pe")


@pytest.mark.parametrize("text", ["AB123CD", "5UVR090", "UH1F0F", "FWE50", "1049338"])
def test_plates_are_plausible(text):
    assert plausibility(plate(text), "univ") > 0


@pytest.mark.parametrize(
    "text", ["", "A1", "TOYOTA", "20240512", "2014", "201404", "A1B2C3D", "ABCDEFGH123"]
)
def test_other_texts_are_not(text):
    assert plausibility(plate(text), "univ") == 0


def test_dates_and_times_show_by_their_separators():
    assert plausibility(plate("124507", 0.9, "12:45:07"), "univ") == 0
    assert plausibility(plate("120524", 0.9, "12/05/24"), "univ") == 0
    assert plausibility(plate("124507", 0.9, "124507"), "univ") > 0


def test_numbers_need_a_framed_ground_more_than_mixed_texts():
    assert plausibility(plate("1049338"), "univ", framing=0.2) == 0
    assert plausibility(plate("AB123CD"), "univ", framing=0.2) > 0
    assert plausibility(plate("AB123CD"), "univ", framing=0.05) == 0


def test_a_text_of_the_regions_format_is_more_plausible():
    assert plausibility(plate("RK101AO"), "sk") > plausibility(plate("ABC1234"), "sk")


def test_separators_go_and_their_confidences_with_them():
    read = ReadText("ab-1 2.", (0.9, 0.8, 0.1, 0.7, 0.2, 0.6, 0.3))
    cleaned = plate_characters(read, "univ")
    assert (cleaned.text, cleaned.confidences) == ("AB12", (0.9, 0.8, 0.7, 0.6))
    assert cleaned.rows == ("ab-1 2.",)


@pytest.mark.parametrize(
    ("read", "region", "text"),
    [
        ("АВ123С", "ru", "AB123C"),  # Cyrillic letters
        ("粤B12345", "cn", "粤B12345"),
        ("粤B12345", "de", "B12345"),
        ("品川さ1234", "jp", "品川さ1234"),
    ],
)
def test_scripts(read, region, text):
    assert plate_characters(ReadText(read, (0.9,) * len(read)), region).text == text


def test_the_heavier_reading_is_elected_with_the_mean_of_those_that_agree():
    agreed = _elected([plate("AB1", 0.9), plate("AB7", 0.95), plate("AB1", 0.7)])
    assert agreed.text == "AB1"
    assert agreed.confidences == pytest.approx((0.8, 0.8, 0.8))
