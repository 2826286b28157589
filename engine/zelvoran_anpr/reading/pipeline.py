"""Detector and reader together: from a photo to the plates on it."""

import numpy as np

from ..region_aliases import to_internal_region
from . import quads
from .plate_box import PlateBox
from .plate_plausibility import plausibility
from .plate_text import PlateText
from .v17 import zv_anpr_detector_v17, zv_anpr_ocr_v17

_LEAST_SCORE = 0.08  # plausibility and both confidences together: less is chance
_SAME_PLATE = 0.3  # shared part of the smaller box from which two boxes are one plate


def read_plates(
    detector: zv_anpr_detector_v17,
    ocr: zv_anpr_ocr_v17,
    image_rgb: np.ndarray,
    region: str | None = None,
) -> dict:
    """Read the plates on an H x W x 3 uint8 RGB array, the surest first.

    Returns {"results": [{"ocr", "ocr_conf", "ltrb", "ltrb_conf"}, ...], "region": internal
    region}; `ltrb` is four whole pixels, the confidences are 0..1. `region`, as users type it,
    replaces the region of `ocr` for this call. Thread-safe.
    """
    internal = to_internal_region(region) if region else ocr.region
    found = []
    for box in detector.detect(image_rgb):
        text = ocr.read(image_rgb, box, internal)
        score = plausibility(text, internal) * text.confidence * box.confidence
        if score >= _LEAST_SCORE:
            found.append((score, box, text))
    plates = _best_of_each_place(found)
    return {"results": [_result(image_rgb, *plate) for plate in plates], "region": internal}


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


def _result(image: np.ndarray, box: PlateBox, text: PlateText) -> dict:
    height, width = image.shape[:2]
    limits = (width, height, width, height)
    ltrb = [
        min(max(round(side), 0), limit)
        for side, limit in zip(quads.bounds(box.corners), limits, strict=True)
    ]
    return {
        "ocr": text.text,
        "ocr_conf": text.confidence,
        "ltrb": ltrb,
        "ltrb_conf": box.confidence,
    }
