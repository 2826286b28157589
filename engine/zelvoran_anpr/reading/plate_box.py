"""What a detector hands to a reader."""

from dataclasses import dataclass

import numpy as np


@dataclass(frozen=True)
class PlateBox:
    """A place on a photo that may be a plate.

    `corners` is the plate's quad (4 x 2 floats in photo pixels: upper left, upper right, lower
    right, lower left, as the text reads), `confidence` the detector's (0..1).
    """

    corners: np.ndarray
    confidence: float
