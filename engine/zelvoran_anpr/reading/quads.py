"""Geometry of four-cornered boxes: 4 x 2 float arrays of (x, y) in pixels.

The corners run top left, top right, bottom right, bottom left as the text reads.
"""

import numpy as np


def min_area_rect(points: np.ndarray) -> np.ndarray:
    """Return the smallest rectangle around N x 2 points, any angle, as a quad."""
    hull = _hull(points)
    edges = np.diff(np.vstack([hull, hull[:1]]), axis=0)
    lengths = np.hypot(*edges.T)
    along = edges[lengths > 0] / lengths[lengths > 0, None]
    if len(along) == 0:
        return np.repeat(hull[:1], 4, axis=0)
    across = np.stack([-along[:, 1], along[:, 0]], axis=1)
    u, v = hull @ along.T, hull @ across.T
    best = int(np.argmin(np.ptp(u, axis=0) * np.ptp(v, axis=0)))
    reach = [(f(u[:, best]), g(v[:, best])) for f, g in _CORNERS]
    return reading_order(np.array([s * along[best] + t * across[best] for s, t in reach]))


_CORNERS = ((np.min, np.min), (np.max, np.min), (np.max, np.max), (np.min, np.max))


def _hull(points: np.ndarray) -> np.ndarray:
    ordered = np.unique(points, axis=0).tolist()
    if len(ordered) < 3:
        return np.array(ordered)
    return np.array(_half_hull(ordered) + _half_hull(ordered[::-1]))


def _half_hull(ordered: list[list[float]]) -> list[list[float]]:
    half: list[list[float]] = []
    for p in ordered:
        while len(half) > 1 and _turn(half[-2], half[-1], p) <= 0:
            half.pop()
        half.append(p)
    return half[:-1]


def _turn(a: list[float], b: list[float], c: list[float]) -> float:
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0])


def reading_order(rect: np.ndarray) -> np.ndarray:
    """Return a rectangle's corners so that its first edge runs left to right (within 45°)."""
    edges = np.roll(rect, -1, axis=0) - rect
    first = int(np.argmax(edges[:, 0] / np.maximum(np.hypot(*edges.T), 1e-9)))
    rect = np.roll(rect, -first, axis=0)
    return rect if rect[3, 1] >= rect[0, 1] else rect[[3, 2, 1, 0]]


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
