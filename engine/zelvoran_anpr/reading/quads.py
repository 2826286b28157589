"""Geometry of four-cornered boxes: 4 x 2 float arrays of (x, y) in pixels.

The corners run top left, top right, bottom right, bottom left as the text reads.
"""

import numpy as np


def size(quad: np.ndarray) -> tuple[float, float]:
    """Return the mean width (along the text) and the mean height of a quad."""
    top, right, bottom, left = np.roll(quad, -1, axis=0) - quad
    width = (np.hypot(*top) + np.hypot(*bottom)) / 2
    return float(width), float((np.hypot(*left) + np.hypot(*right)) / 2)


def axes(quad: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
    """Return the unit vectors along the text and downwards."""
    along = (quad[1] - quad[0]) + (quad[2] - quad[3])
    down = (quad[3] - quad[0]) + (quad[2] - quad[1])
    return along / max(np.hypot(*along), 1e-9), down / max(np.hypot(*down), 1e-9)


def grow(quad: np.ndarray, left: float, top: float, right: float, bottom: float) -> np.ndarray:
    """Move each side of a quad outwards by its distance in pixels."""
    along, down = axes(quad)
    moves = [
        -left * along - top * down,
        right * along - top * down,
        right * along + bottom * down,
        -left * along + bottom * down,
    ]
    return quad + np.array(moves)


def bounds(quad: np.ndarray) -> tuple[float, float, float, float]:
    """Return left, top, right, bottom of the upright box around a quad."""
    left, top = quad.min(axis=0)
    right, bottom = quad.max(axis=0)
    return float(left), float(top), float(right), float(bottom)


def iou(a: tuple, b: tuple) -> float:
    """Return intersection over union of two upright boxes (left, top, right, bottom)."""
    shared = overlap_area(a, b)
    union = box_area(a) + box_area(b) - shared
    return shared / union if union > 0 else 0.0


def overlap_area(a: tuple, b: tuple) -> float:
    width = min(a[2], b[2]) - max(a[0], b[0])
    height = min(a[3], b[3]) - max(a[1], b[1])
    return max(0.0, width) * max(0.0, height)


def box_area(a: tuple) -> float:
    return max(0.0, a[2] - a[0]) * max(0.0, a[3] - a[1])
