"""Detector and reader together: from a photo to the plates on it."""

from typing import Protocol

import numpy as np

from ..region_aliases import to_internal_region
from . import quads
from .photo import Photo
from .plate_box import PlateBox
from .plate_plausibility import plausibility
from .plate_result import ReadResult, plate_result
from .plate_text import PlateText
from .whole_picture import could_be_plate, frame, shown_share

_LEAST_SCORE = 0.21  # plausibility, legibility and the box's confidence together: less is chance
_READ = 1.5  # exponent of the legibility: what can be read says more than what looks like a plate
_SAME_PLATE = 0.3  # shared part of the smaller box from which two boxes are one plate
_SURE = 0.5  # confidence below which the picture as a whole is read as well
_WHOLE = 0.92  # share of a plate's width and height on the photo from which nothing is cut
_CUT = 0.5  # confidence that a plate of which a part is not on the photo has at most


COARSE = 1600  # pixels of the longer side at which large photos are looked at first


class Detector(Protocol):
    """What finds plates on an H x W x 3 uint8 RGB array."""

    def detect(self, image_rgb: np.ndarray) -> list[PlateBox]: ...


class Reader(Protocol):
    """What reads a plate for an internal region; `region` is its own."""

    region: str

    def read(self, image_rgb: np.ndarray, box: PlateBox, region: str | None) -> PlateText: ...


def read_plates(
    detector: Detector, ocr: Reader, image_rgb: Photo | np.ndarray, region: str | None = None
) -> ReadResult:
    """Read the plates on an H x W x 3 uint8 RGB array, the surest first.

    `region`, as users type it, replaces the region of `ocr` for this call. Thread-safe.
    """
    internal = to_internal_region(region) if region else ocr.region
    boxes = detector.detect(image_rgb)
    found = [_judged(image_rgb, box, ocr.read(image_rgb, box, internal), internal) for box in boxes]
    if could_be_plate(image_rgb) and not any(_is_sure(text) for _, _, text in found):
        found += _read_whole(ocr, image_rgb, internal)
    plates = _best_of_each_place([one for one in found if one[0] >= _LEAST_SCORE])
    return {"results": [plate_result(image_rgb, *plate) for plate in plates], "region": internal}


def _judged(image: Photo | np.ndarray, box: PlateBox, text: PlateText, region: str) -> tuple:
    """Return (score, box, text); a plate that is cut by the photo's edge is never sure."""
    score = plausibility(text, region) * text.legibility**_READ * box.confidence
    cut = shown_share(image, box) < _WHOLE
    return score, box, text.at_most(_CUT) if cut else text


def _is_sure(text: PlateText) -> bool:
    return text.confidence >= _SURE


def _read_whole(ocr: Reader, image: Photo | np.ndarray, region: str) -> list[tuple]:
    """Return what the picture says when it is nothing but a plate: at most one."""
    text = ocr.read(image, frame(image, 1.0), region)
    if text.confidence < _SURE or plausibility(text, region) < 1:
        return []
    return [(text.confidence, frame(image, text.confidence), text)]


def _best_of_each_place(found: list) -> list[tuple[PlateBox, PlateText]]:
    kept: list[tuple[PlateBox, PlateText]] = []
    for _, box, text in sorted(found, key=lambda one: -one[0]):
        if not any(_same_place(box, other) for other, _ in kept):
            kept.append((box, text))
    return kept


def _same_place(one: PlateBox, other: PlateBox) -> bool:
    a, b = quads.bounds(one.corners), quads.bounds(other.corners)
    smaller = min(quads.box_area(a), quads.box_area(b))
    return quads.overlap_area(a, b) > _SAME_PLATE * smaller
