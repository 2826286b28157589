"""Turns text lines into plate candidates: by shape, size and contrast, in one or two rows."""

from dataclasses import replace
from itertools import combinations

import numpy as np

from . import quads
from .plate_box import PlateBox
from .plate_ground import ground_edge
from .straighten import straighten
from .text_detection import TextLine

_MIN_TEXT_HEIGHT = 8.0  # photo pixels; below it nothing can be read
_ASPECTS = (1.0, 9.0)  # width over height of a plate's text line
_MIN_CONTRAST = 18  # grey levels between a line's dark and light parts
_STEEPEST = 0.8  # rise over run of a line that still reads left to right
_MOST_LINES = 40  # a page of print has more; the surest are tried


def plate_candidates(image: np.ndarray, lines: list[TextLine]) -> list[PlateBox]:
    """Return the candidates among text lines, the surest first; they may share lines."""
    surest = sorted(lines, key=lambda line: -line.confidence)[:_MOST_LINES]
    legible = [line for line in surest if _is_legible(line) and _has_contrast(image, line)]
    boxes = [_one_row(line) for line in legible if _aspect_fits(line.quad)]
    for one, other in combinations(legible, 2):
        boxes += _joined(one, other)
    framed = (replace(box, framing=_framing(image, box)) for box in boxes)
    return sorted(framed, key=lambda box: -box.confidence)


def _framing(image: np.ndarray, box: PlateBox) -> float:
    return min(1.0, ground_edge(image, box.lines[0] if len(box.lines) == 1 else box.corners))


def _is_legible(line: TextLine) -> bool:
    along, _ = quads.axes(line.quad)
    return quads.size(line.quad)[1] >= _MIN_TEXT_HEIGHT and abs(along[1]) <= _STEEPEST * along[0]


def _has_contrast(image: np.ndarray, line: TextLine) -> bool:
    grey = straighten(image, line.quad, 24, 96).mean(axis=2)
    dark, light = np.percentile(grey, (5, 95))
    return bool(light - dark >= _MIN_CONTRAST)


def _aspect_fits(quad: np.ndarray) -> bool:
    width, height = quads.size(quad)
    return _ASPECTS[0] <= width / height <= _ASPECTS[1]


def _one_row(line: TextLine) -> PlateBox:
    return PlateBox(_outline(line.quad), line.confidence, (line.quad,))


def _outline(quad: np.ndarray) -> np.ndarray:
    """Estimate the plate around its text: short wide lettering has print above and below."""
    width, height = quads.size(quad)
    margin = 0.12 * height if width < 3.3 * height else 0.05 * height
    return quads.grow(quad, 0, margin, 0, margin)


def _joined(one: TextLine, other: TextLine) -> list[PlateBox]:
    """Return the plate that two lines form together: side by side, or one above the other."""
    offset, heights = _offset(one.quad, other.quad)
    if not 0.5 <= heights[0] / heights[1] <= 2:
        return []
    confidence = min(one.confidence, other.confidence)
    around = quads.min_area_rect(np.vstack([one.quad, other.quad]))
    if _continues(one.quad, other.quad, offset, heights) and _aspect_fits(around):
        return [PlateBox(_outline(around), confidence, (around,))]
    if _stacks(one.quad, other.quad, offset, heights):
        upper, lower = (one, other) if offset[1] > 0 else (other, one)
        return [PlateBox(around, confidence, (upper.quad, lower.quad))]
    return []


def _offset(one: np.ndarray, other: np.ndarray) -> tuple[np.ndarray, tuple[float, float]]:
    """Return the way between the centres (along the text, downwards) and both text heights."""
    along, down = quads.axes(one)
    way = other.mean(axis=0) - one.mean(axis=0)
    return np.array([way @ along, way @ down]), (quads.size(one)[1], quads.size(other)[1])


def _continues(one: np.ndarray, other: np.ndarray, offset: np.ndarray, heights: tuple) -> bool:
    """Tell whether two lines are halves of one row: an emblem or a blank lies between."""
    height = sum(heights) / 2
    gap = abs(offset[0]) - (quads.size(one)[0] + quads.size(other)[0]) / 2
    even = 0.7 <= heights[0] / heights[1] <= 1.4
    return bool(even and abs(offset[1]) < 0.4 * height and -0.5 * height < gap < 1.2 * height)


def _stacks(one: np.ndarray, other: np.ndarray, offset: np.ndarray, heights: tuple) -> bool:
    """Tell whether two lines are the rows of one plate."""
    height = sum(heights) / 2
    narrower = min(quads.size(one)[0], quads.size(other)[0])
    near = 0.6 * height < abs(offset[1]) < 1.6 * height
    return bool(near and abs(offset[0]) < 0.5 * narrower)
