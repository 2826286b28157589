"""Judges whether a text could be a plate's."""

from .plate_formats import knows_formats, matches_format
from .plate_text import PlateText

_LENGTHS = (3, 12)  # characters of a plate
_MIN_CONFIDENCE = 0.1  # of the least certain character
_AGAINST_FORMAT = 0.7


def plausibility(text: PlateText, region: str) -> float:
    """Return 0 (no plate) to 1 (could well be one of the region)."""
    if not _LENGTHS[0] <= len(text.text) <= _LENGTHS[1] or text.confidence < _MIN_CONFIDENCE:
        return 0.0
    if knows_formats(region) and not matches_format(text.text, region):
        return _AGAINST_FORMAT
    return 1.0
