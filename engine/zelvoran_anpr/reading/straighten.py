"""Cuts a four-cornered box out of a photo as an upright picture."""

import numpy as np
from PIL import Image

from . import quads
from .photo import Cut, Photo

MARGIN = 2  # pixels around a quad, for the interpolation


def straighten(image: Photo | np.ndarray, quad: np.ndarray, height: int, width: int) -> np.ndarray:
    """Return the inside of a quad (4 x 2, reading order) as an RGB picture of the given size."""
    cut = Photo.of(image).cut(quads.bounds(quad), MARGIN)
    return laid_flat(cut, quad, height, width)


def laid_flat(cut: Cut | None, quad: np.ndarray, height: int, width: int) -> np.ndarray:
    """Return the same from a cut around the quad; black where there is none."""
    if cut is None:
        return np.zeros((height, width, 3), np.uint8)
    target = np.array([[0, 0], [width, 0], [width, height], [0, height]], np.float64)
    coefficients = _perspective(target, (quad - cut.origin) * cut.scale)
    picture = cut.picture.transform(
        (width, height),
        Image.Transform.PERSPECTIVE,
        tuple(coefficients),
        Image.Resampling.BICUBIC,
    )
    return np.asarray(picture)


def _perspective(target: np.ndarray, source: np.ndarray) -> np.ndarray:
    """Return the eight coefficients that send target points to source points."""
    rows, values = [], []
    for (x, y), (u, v) in zip(target, source, strict=True):
        rows += [[x, y, 1, 0, 0, 0, -u * x, -u * y], [0, 0, 0, x, y, 1, -v * x, -v * y]]
        values += [u, v]
    return np.linalg.solve(np.array(rows), np.array(values))
