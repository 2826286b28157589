"""Confidence, formats and plausibility of plate texts."""

import pytest
from zelvoran_anpr.reading.plate_formats import FORMATS, fit_to_format, matches_format
from zelvoran_anpr.reading.plate_plausibility import plausibility
from zelvoran_anpr.reading.plate_text import PlateText
from zelvoran_anpr.region_countries import COUNTRIES


def plate(text: str, sure: float = 0.9) -> PlateText:
    return PlateText(text, (sure,) * len(text))


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


@pytest.mark.parametrize("text", ["AB123CD", "5UVR090", "UH1F0F", "FWE50", "1049338", "BIMMIAN"])
def test_plates_are_plausible(text):
    assert plausibility(plate(text), "univ") > 0


@pytest.mark.parametrize("text", ["", "A1", "ABCDEFGH12345"])
def test_texts_too_short_or_too_long_are_not(text):
    assert plausibility(plate(text), "univ") == 0


def test_a_reading_that_is_hardly_sure_is_no_plate():
    assert plausibility(plate("AB123CD", 0.15), "univ") == 0
    assert plausibility(plate("AB123CD", 0.25), "univ") == 1


def test_a_date_is_no_plate_unless_the_region_has_such_plates():
    assert plausibility(plate("20240512"), "univ") == 0
    assert plausibility(plate("20240512"), "il") == 1
    assert plausibility(plate("20241312"), "univ") == 1


def test_a_text_of_the_regions_format_is_more_plausible():
    assert plausibility(plate("RK101AO"), "sk") > plausibility(plate("ABC1234"), "sk")
