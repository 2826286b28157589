"""Cuts a four-cornered box out of a photo as an upright picture."""

import numpy as np
from PIL import Image


def straighten(image: np.ndarray, quad: np.ndarray, height: int, width: int) -> np.ndarray:
    """Return the inside of a quad (4 x 2, reading order) as an RGB picture of the given size."""
    left, top, right, bottom = _reach(image, quad)
    if right - left < 1 or bottom - top < 1:
        return np.zeros((height, width, 3), np.uint8)
    part = Image.fromarray(image[top:bottom, left:right])
    target = np.array([[0, 0], [width, 0], [width, height], [0, height]], np.float64)
    coefficients = _perspective(target, quad - [left, top])
    picture = part.transform(
        (width, height),
        Image.Transform.PERSPECTIVE,
        tuple(coefficients),
        Image.Resampling.BICUBIC,
    )
    return np.asarray(picture)


def _reach(image: np.ndarray, quad: np.ndarray) -> tuple[int, int, int, int]:
    """Return the pixels that the quad touches, with a margin for the interpolation."""
    left, top = np.floor(quad.min(axis=0)).astype(int) - 2
    right, bottom = np.ceil(quad.max(axis=0)).astype(int) + 2
    height, width = image.shape[:2]
    return max(0, left), max(0, top), min(width, right), min(height, bottom)


def _perspective(target: np.ndarray, source: np.ndarray) -> np.ndarray:
    """Return the eight coefficients that send target points to source points."""
    rows, values = [], []
    for (x, y), (u, v) in zip(target, source, strict=True):
        rows += [[x, y, 1, 0, 0, 0, -u * x, -u * y], [0, 0, 0, x, y, 1, -v * x, -v * y]]
        values += [u, v]
    return np.linalg.solve(np.array(rows), np.array(values))
