"""Pictures that are a plate themselves, and plates that the picture's edge cuts."""

import numpy as np

from . import quads
from .photo import Photo
from .plate_box import PlateBox

_ASPECTS = (0.9, 8.0)  # width by height of pictures that may be one plate


def could_be_plate(image: Photo | np.ndarray) -> bool:
    """Tell whether an H x W x 3 image has the shape of a plate with some border."""
    height, width = image.shape[:2]
    return _ASPECTS[0] <= width / height <= _ASPECTS[1]


def frame(image: Photo | np.ndarray, confidence: float) -> PlateBox:
    """Return the whole picture as a box, found with a confidence of 0..1."""
    height, width = image.shape[:2]
    corners = np.array([[0, 0], [width, 0], [width, height], [0, height]], np.float64)
    return PlateBox(corners, confidence)


def shown_share(image: Photo | np.ndarray, box: PlateBox) -> float:
    """Return the share (0..1) of a box's width or height, the smaller one, that is on the image."""
    height, width = image.shape[:2]
    left, top, right, bottom = quads.bounds(box.corners)
    across = (min(right, width) - max(left, 0)) / max(right - left, 1e-9)
    down = (min(bottom, height) - max(top, 0)) / max(bottom - top, 1e-9)
    return max(0.0, min(across, down))
