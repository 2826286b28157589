"""The record of one plate, as programs get it."""

from typing import TypedDict

import numpy as np

from . import quads
from .photo import Photo
from .plate_box import PlateBox
from .plate_formats import countries_of
from .plate_text import PlateText


class Candidate(TypedDict):
    """A text that some look read, and its share (0..1) of the votes."""

    text: str
    share: float


class Origin(TypedDict):
    """Whose plate it looks like: a region group ("eup", "na", "sa", ...), sure to 0..1.

    `countries` are the ISO codes whose formats the text has, among those whose formats are known.
    """

    group: str
    confidence: float
    countries: list[str]


class PlateResult(TypedDict):
    """One plate. Confidences are 0..1, places are pixels of the upright photo."""

    ocr: str  # the text without separators
    ocr_conf: float  # of the least certain character
    ltrb: list[int]  # the upright box: left, top, right, bottom
    ltrb_conf: float
    corners: list[list[float]]  # 4 x (x, y), clockwise from the upper left as the text reads
    char_confs: list[float]  # one for each character
    candidates: list[Candidate]  # the chosen text first
    origin: Origin | None  # None where the reader does not tell


class ReadResult(TypedDict):
    """The plates of a photo, the surest first, and the internal region they were read for."""

    results: list[PlateResult]
    region: str


def plate_result(image: Photo | np.ndarray, box: PlateBox, text: PlateText) -> PlateResult:
    """Return the record of a plate on an H x W x 3 image."""
    return {
        "ocr": text.text,
        "ocr_conf": text.confidence,
        "ltrb": _within(image, quads.bounds(box.corners)),
        "ltrb_conf": box.confidence,
        "corners": [[float(x), float(y)] for x, y in box.corners],
        "char_confs": list(text.confidences),
        "candidates": [{"text": one, "share": share} for one, share in text.candidates],
        "origin": _origin(text),
    }


def _within(image: Photo | np.ndarray, bounds: tuple) -> list[int]:
    height, width = image.shape[:2]
    limits = (width, height, width, height)
    return [min(max(round(side), 0), limit) for side, limit in zip(bounds, limits, strict=True)]


def _origin(text: PlateText) -> Origin | None:
    if not text.groups:
        return None
    group = max(text.groups, key=lambda name: text.groups[name])
    return {
        "group": group,
        "confidence": text.groups[group],
        "countries": list(countries_of(text.text)),
    }
