"""Measures whether the ground that a text stands on ends around it, as a plate's does.

Lettering on a car's body, on a wall or burned into the photo lacks an edge on some side.
"""

import numpy as np

from . import quads
from .straighten import straighten

_TEXT_ROWS = 24  # pixels; one text height in the straightened picture
_REACH = 1.0, 1.2  # text heights beside, and above and below, within which the ground must end
_INSIDE = 3  # pixels that the line's own edge may be off
_LEAST_CONTRAST = 8.0  # grey levels


def ground_edge(image: np.ndarray, quad: np.ndarray) -> float:
    """Return the weakest of the four edges around a text line, as a share of its contrast.

    0 means that the ground goes on at a side; plates have mostly more than 0.35.
    """
    height = quads.size(quad)[1]
    beside, above = _REACH[0] * height, _REACH[1] * height
    columns = max(_TEXT_ROWS, round(quads.size(quad)[0] / max(height, 1) * _TEXT_ROWS))
    left, top = round(_REACH[0] * _TEXT_ROWS), round(_REACH[1] * _TEXT_ROWS)
    picture = straighten(
        image,
        quads.grow(quad, beside, above, beside, above),
        _TEXT_ROWS + 2 * top,
        columns + 2 * left,
    )
    grey = picture.mean(axis=2)
    return _weakest_edge(grey, left, top)


def _weakest_edge(grey: np.ndarray, left: int, top: int) -> float:
    rows, columns = slice(top, -top), slice(left, -left)
    ground, contrast = _ground(grey[rows, columns][_INSIDE:-_INSIDE])
    level = grey[top + _INSIDE : -top - _INSIDE]
    sides = (
        np.median(level[:, : left + 2 * _INSIDE], axis=0),
        np.median(level[:, -left - 2 * _INSIDE :], axis=0),
        np.median(grey[:top, columns], axis=1),
        np.median(grey[-top:, columns], axis=1),
    )
    return min(float(np.abs(side - ground).max()) / contrast for side in sides)


def _ground(text: np.ndarray) -> tuple[float, float]:
    """Return the grey of a text's ground, and how far the letters' grey is from it."""
    limit = _otsu(text)
    light, dark = text[text > limit], text[text <= limit]
    if light.size == 0 or dark.size == 0:
        return float(np.median(text)), _LEAST_CONTRAST
    contrast = float(np.median(light) - np.median(dark))
    ground = light if light.size >= dark.size else dark
    return float(np.median(ground)), max(contrast, _LEAST_CONTRAST)


def _otsu(values: np.ndarray) -> int:
    """Return the grey level that best separates two groups of values (Otsu's method)."""
    counts = np.bincount(values.astype(np.uint8).ravel(), minlength=256).astype(np.float64)
    below = counts.cumsum()
    moment = (counts * np.arange(256)).cumsum()
    weight = below * (below[-1] - below)
    spread = (moment[-1] * below - moment * below[-1]) ** 2
    return int(np.argmax(np.where(weight > 0, spread / np.maximum(weight, 1), 0)))
