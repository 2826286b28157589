"""What a detector hands to a reader."""

from dataclasses import dataclass

import numpy as np


@dataclass(frozen=True)
class PlateBox:
    """A place on a photo that may be a plate.

    `corners` is the plate's quad (4 x 2 floats in photo pixels, reading order), `confidence` the
    detector's (0..1), and `lines` the quads of the text to read, the upper line first. `framing`
    says how clearly the plate's ground ends on every side: 0 not at all, 1 as sharply as its
    lettering.
    """

    corners: np.ndarray
    confidence: float
    lines: tuple[np.ndarray, ...]
    framing: float = 1.0
