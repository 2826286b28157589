"""What of a plate's text a picture shows: not what its edge cuts off, nor what is too small."""

import numpy as np

from ..plates.face import Face
from ..plates.lettering import Mark
from . import geometry

_SHARE = 0.7  # of a character's area that must be seen
_LEAST = 7.0  # pixels of the minor characters' mean height from which they can be read
_GRID = (np.mgrid[0:7, 0:7].reshape(2, -1).T + 0.5) / 7


def text_in(face: Face, plate: np.ndarray, area: np.ndarray) -> str:
    """Return the characters of a plate at `plate` (4 x 2 pixels) that the quad `area` shows."""
    if not face.marks:
        return face.text
    on_photo = geometry.homography(geometry.corners(0, 0, *face.picture.size), plate)
    into_area = geometry.homography(area, geometry.corners(0, 0, 1, 1))
    heights = [_height(mark, on_photo) for mark in face.marks if mark.minor]
    without_minor = bool(heights) and float(np.mean(heights)) < _LEAST
    return "".join(
        mark.text
        for mark in face.marks
        if _is_inside(mark, into_area @ on_photo) and not (mark.minor and without_minor)
    )


def _is_inside(mark: Mark, matrix: np.ndarray) -> bool:
    left, top, right, bottom = mark.box
    spots = geometry.project(matrix, _GRID * (right - left, bottom - top) + (left, top))
    return bool(((spots >= 0) & (spots <= 1)).all(axis=1).mean() >= _SHARE)


def _height(mark: Mark, matrix: np.ndarray) -> float:
    quad = geometry.project(matrix, geometry.corners(*mark.box))
    return float(np.hypot(*(quad[[3, 2]] - quad[[0, 1]]).T).mean())
