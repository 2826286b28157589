"""Judges whether a text could be a plate's."""

import re

from .plate_formats import knows_formats, matches_format
from .plate_text import PlateText

_LENGTHS = (3, 12)  # characters of a plate
_MIN_LEGIBILITY = 0.2  # of all characters but the least certain
_AGAINST_FORMAT = 0.7
_SHORT = 0.4  # three characters: more often a word on a car than a plate
_DATE = re.compile(r"(19|20)\d\d(0[1-9]|1[0-2])(0[1-9]|[12]\d|3[01])")


def plausibility(text: PlateText, region: str) -> float:
    """Return 0 (no plate) to 1 (could well be one of the region)."""
    if not _LENGTHS[0] <= len(text.text) <= _LENGTHS[1] or text.legibility < _MIN_LEGIBILITY:
        return 0.0
    if matches_format(text.text, region):
        return 1.0
    if _DATE.fullmatch(text.text):
        return 0.0  # what cameras and screens write into pictures
    if len(text.text) == _LENGTHS[0]:
        return _SHORT
    return _AGAINST_FORMAT if knows_formats(region) else 1.0
