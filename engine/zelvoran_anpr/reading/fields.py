"""The detector's inputs: a photo as a whole, and parts of it enlarged."""

from dataclasses import dataclass

import numpy as np
from PIL import Image

from .photo import Photo

_STEP = 32  # the network's sides are multiples of it
_GREY = 114  # what training fills the rest of a picture with
_PART = (256, 160)  # width and height of an enlarged part
_PLATE = 110  # width of a plate in it, at which its corners are told best
_TALL = 1.6  # width by height of plates whose height counts


@dataclass(frozen=True)
class Field:
    """An input (H x W x 3 uint8); its pixel p shows the photo's pixel p / scale + origin."""

    pixels: np.ndarray
    scale: float
    origin: tuple[float, float] = (0.0, 0.0)

    def on_photo(self, points: np.ndarray) -> np.ndarray:
        """Return ... x 2 places on the field as places on the photo."""
        return points / self.scale + np.array(self.origin)


def whole(image: Photo | np.ndarray, longest: int) -> Field:
    """Return an H x W x 3 photo with `longest` as its longer side; what is beside it is grey."""
    height, width = image.shape[:2]
    scale = longest / max(height, width)
    small = Photo.of(image).resized(max(1, round(width * scale)), max(1, round(height * scale)))
    rows, columns = (-(-side // _STEP) * _STEP for side in small.shape[:2])
    return Field(_laid(small, (columns, rows), (0, 0)), scale)


def part(image: Photo | np.ndarray, bounds: tuple[float, float, float, float]) -> Field:
    """Return the surroundings of a plate's bounds on an H x W x 3 photo, the plate of good size."""
    left, top, right, bottom = bounds
    scale = _PLATE / max(right - left, _TALL * (bottom - top), 1)
    wide, high = (side / scale for side in _PART)
    x, y = (left + right - wide) / 2, (top + bottom - high) / 2
    cut = Photo.of(image).cut((x, y, x + wide, y + high))
    if cut is None:
        return Field(np.full((_PART[1], _PART[0], 3), _GREY, np.uint8), scale, (x, y))
    size = tuple(max(1, round(side * scale / cut.scale)) for side in cut.picture.size)
    place = tuple(round((a - b) * scale) for a, b in zip(cut.origin, (x, y), strict=True))
    small = np.asarray(cut.picture.resize(size, Image.Resampling.BILINEAR))
    origin = tuple(a - b / scale for a, b in zip(cut.origin, place, strict=True))
    return Field(_laid(small, _PART, place), scale, origin)


def _laid(picture: np.ndarray, size: tuple[int, int], place: tuple[int, int]) -> np.ndarray:
    """Return a grey field of a size (width, height) with the picture at a place, cut to fit."""
    field = np.full((size[1], size[0], 3), _GREY, np.uint8)
    x, y = max(0, place[0]), max(0, place[1])
    shown = picture[y - place[1] :, x - place[0] :][: size[1] - y, : size[0] - x]
    field[y : y + shown.shape[0], x : x + shown.shape[1]] = shown
    return field
