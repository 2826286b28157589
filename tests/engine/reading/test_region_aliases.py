"""Region names: groups, codes, country names, aliases, and the refusal of others."""

import pytest
from zelvoran_anpr.region_aliases import (
    INTERNAL_GROUPS,
    region_group,
    to_api_region,
    to_internal_region,
)
from zelvoran_anpr.region_countries import COUNTRIES


@pytest.mark.parametrize("group", ["eup", "na", "kr", "cn", "jp", "univ"])
def test_groups_stay(group):
    assert to_internal_region(group) == group


@pytest.mark.parametrize(
    ("typed", "internal"),
    [
        ("euplus", "eup"),
        ("eu", "eup"),
        ("asia", "eup"),
        ("africa", "eup"),
        ("oceania", "eup"),
        ("exussr", "eup"),
        ("korea", "kr"),
        ("china", "cn"),
        ("japan", "jp"),
        ("germany", "de"),
        ("United States", "us"),
        ("  South   Korea ", "kr"),
        ("NEW-ZEALAND", "nz"),
        ("UK", "gb"),
        ("Au", "au"),
    ],
)
def test_aliases_and_names(typed, internal):
    assert to_internal_region(typed) == internal


def test_namibia_is_its_group_because_na_is_north_america():
    assert to_internal_region("na") == "na"
    assert to_internal_region("Namibia") == "eup"


def test_every_country_code_is_accepted_and_stays_when_translated_again():
    assert len(COUNTRIES) == 250
    for code in COUNTRIES:
        internal = to_internal_region(code.upper())
        assert to_internal_region(internal) == internal
        assert region_group(internal) in INTERNAL_GROUPS


def test_every_name_leads_to_its_country():
    for code, (group, names) in COUNTRIES.items():
        for name in names:
            assert to_internal_region(name) in (code, group)


@pytest.mark.parametrize(
    ("typed", "api"),
    [("kr", "korea"), ("eup", "euplus"), ("univ", "univ"), ("CN", "china"), ("de", "de")],
)
def test_api_names(typed, api):
    assert to_api_region(typed) == api


@pytest.mark.parametrize("typed", ["", "xx", "atlantis", "a\nb", "\ud800", None, 7, "y" * 500])
def test_unknown_regions_are_refused_in_one_line(typed):
    with pytest.raises(ValueError, match="Unknown region") as caught:
        to_internal_region(typed)
    text = str(caught.value)
    text.encode("utf-8")
    assert "\n" not in text
    assert "univ" in text
    assert "country code" in text


def test_a_mistyped_name_gets_a_suggestion():
    with pytest.raises(ValueError, match='did you mean "germany"'):
        to_internal_region("germny")
