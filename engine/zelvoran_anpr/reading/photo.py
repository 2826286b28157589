"""A photo as it is looked at: upright, known by its own pixels, unpacked as finely as is needed."""

from collections.abc import Callable
from dataclasses import dataclass

import numpy as np
from PIL import Image

_SMOOTH = Image.Resampling.BILINEAR


@dataclass(frozen=True)
class Cut:
    """A part of a photo: `picture` begins at `origin` and shows `scale` pixels per photo pixel."""

    picture: Image.Image
    origin: tuple[float, float]
    scale: float


class Photo:
    """Upright RGB pixels, all of them or a coarser version; for one thread at a time."""

    def __init__(
        self,
        pixels: Image.Image | np.ndarray,
        size: tuple[int, int] | None = None,
        finer: Callable[[float], Image.Image] | None = None,
    ) -> None:
        """`pixels` is a picture or an H x W x 3 uint8 array.

        `size` is the photo's width and height where `pixels` is coarser; then `finer` returns it
        with at least so many pixels per photo pixel.
        """
        self._pixels = pixels
        own = _size(pixels)
        self._finer = finer
        width, height = size or own
        self.shape = (height, width, 3)
        self.scale = own[0] / width if size else 1.0

    @classmethod
    def of(cls, image: "Photo | np.ndarray") -> "Photo":
        return image if isinstance(image, Photo) else cls(image)

    def sharpen(self, scale: float) -> None:
        """Unpack it anew where it has less than `scale` (up to 1) pixels per photo pixel."""
        if self._finer and self.scale < min(scale, 1.0):
            self._pixels = None  # never both at once
            self._pixels = self._finer(scale)
            self.scale = _size(self._pixels)[0] / self.shape[1]

    def resized(self, width: int, height: int) -> np.ndarray:
        """Return all of it in another size; boxes of pixels are averaged first if far larger."""
        return np.asarray(_picture(self._pixels).resize((width, height), _SMOOTH, reducing_gap=1.5))

    def cut(self, bounds: tuple[float, float, float, float], margin: int = 0) -> Cut | None:
        """Return what is on the photo of an upright box (left, top, right, bottom in its pixels).

        `margin` is in pixels of the cut. None where nothing is.
        """
        width, height = _size(self._pixels)
        left, top, right, bottom = (side * self.scale for side in bounds)
        left, top = max(0, int(np.floor(left)) - margin), max(0, int(np.floor(top)) - margin)
        right = min(width, int(np.ceil(right)) + margin)
        bottom = min(height, int(np.ceil(bottom)) + margin)
        if right <= left or bottom <= top:
            return None
        picture = _cropped(self._pixels, (left, top, right, bottom))
        return Cut(picture, (left / self.scale, top / self.scale), self.scale)


def _size(pixels: Image.Image | np.ndarray) -> tuple[int, int]:
    return pixels.size if isinstance(pixels, Image.Image) else pixels.shape[1::-1]


def _picture(pixels: Image.Image | np.ndarray) -> Image.Image:
    return pixels if isinstance(pixels, Image.Image) else Image.fromarray(pixels)


def _cropped(pixels: Image.Image | np.ndarray, box: tuple[int, int, int, int]) -> Image.Image:
    if isinstance(pixels, Image.Image):
        return pixels.crop(box)
    left, top, right, bottom = box
    return Image.fromarray(pixels[top:bottom, left:right])
