"""Judges whether a text could be a plate's."""

import re
from itertools import pairwise

from ..region_aliases import region_group
from .plate_formats import knows_formats, matches_format
from .plate_text import PlateText

_LENGTHS = (4, 9)  # characters of a plate
_MIN_CONFIDENCE = 0.1  # of the least certain character
_MIN_FRAMING = 0.1
_MIN_FRAMING_OF_NUMBER = 0.35  # numbers without a letter stand everywhere
_MOST_CHANGES = 4  # from letter to digit or back
_CLOCK = re.compile(r"\d{1,2}[:：.]\d{2}[:：.]\d{2}|\d{1,2}[:：]\d{2}\b")
_DATE = re.compile(r"\d{4}\D\d{1,2}\D\d{1,2}|\d{1,2}[./]\d{1,2}[./]\d{2,4}")
_STAMP = re.compile(r"(19|20)\d{2}((0[1-9]|1[0-2])\d{0,3}|\b)")


def plausibility(text: PlateText, region: str, framing: float = 1.0) -> float:
    """Return 0 (no plate) to 1 (could well be one of the region).

    `framing` (0..1) says how clearly the text's ground ends on every side.
    """
    letters = sum(c.isalpha() for c in text.text)
    if not _LENGTHS[0] <= len(text.text) <= _LENGTHS[1] or letters == len(text.text):
        return 0.0
    if framing < (_MIN_FRAMING if letters else _MIN_FRAMING_OF_NUMBER):
        return 0.0
    if text.confidence < _MIN_CONFIDENCE or _changes(text.text) > _MOST_CHANGES:
        return 0.0
    if letters == 0:
        return _number_plausibility(text, region)
    if knows_formats(region) and not matches_format(text.text, region):
        return 0.7
    return 0.9 if len(text.text) < 5 or letters == 1 or len(text.text) > 8 else 1.0


def _changes(text: str) -> int:
    kinds = [c.isdigit() for c in text]
    return sum(a != b for a, b in pairwise(kinds))


def _number_plausibility(text: PlateText, region: str) -> float:
    """Judge a text of digits only: dates, times and phone numbers are more frequent than plates."""
    if matches_format(text.text, region):
        return 1.0
    raw = " ".join(text.rows)
    if _CLOCK.search(raw) or _DATE.search(raw) or _STAMP.fullmatch(text.text):
        return 0.0
    if not 5 <= len(text.text) <= 7:
        return 0.0
    return 0.6 if region_group(region) in ("na", "univ") else 0.3
