"""Takes the pixels out of an opened image strip by strip: large photos exist once, not thrice."""

from collections.abc import Iterator

import numpy as np
from PIL import ExifTags, Image

_STRIP_PIXELS = 1 << 20
_TURNS = {
    2: Image.Transpose.FLIP_LEFT_RIGHT,
    3: Image.Transpose.ROTATE_180,
    4: Image.Transpose.FLIP_TOP_BOTTOM,
    5: Image.Transpose.TRANSPOSE,
    6: Image.Transpose.ROTATE_270,
    7: Image.Transpose.TRANSVERSE,
    8: Image.Transpose.ROTATE_90,
}
"""What makes pictures of EXIF's orientations upright."""


def upright_rgb(image: Image.Image) -> np.ndarray:
    """Return a loaded image as an H x W x 3 uint8 RGB array, turned as its EXIF data says."""
    orientation = _orientation(image)
    sides = (image.width, image.height) if orientation > 4 else (image.height, image.width)
    upright = np.empty((*sides, 3), np.uint8)
    as_stored = _stored_view(upright, orientation)
    scale = _scale(image)
    for top, strip in _strips(image):
        as_stored[top : top + strip.height] = _rgb(strip, scale)
    return upright


def upright_picture(image: Image.Image) -> Image.Image:
    """Return the same as a picture of mode RGB; without a copy where it is one already."""
    if image.mode != "RGB":
        return Image.fromarray(upright_rgb(image))
    turn = _TURNS.get(_orientation(image))
    return image.transpose(turn) if turn is not None else image


def _orientation(image: Image.Image) -> int:
    try:
        number = image.getexif().get(ExifTags.Base.Orientation, 1)
    except Exception:  # noqa: BLE001  broken EXIF data says nothing about the pixels
        return 1
    return number if number in range(1, 9) else 1


def _stored_view(upright: np.ndarray, orientation: int) -> np.ndarray:
    """Return the same memory as the picture lies in the file, for EXIF's eight orientations."""
    if orientation in (5, 7):  # mirrored along a diagonal
        upright = upright.swapaxes(0, 1)
    elif orientation in (2, 4):
        upright = upright[:, ::-1]
    quarters = {3: 2, 4: 2, 6: 1, 7: 2, 8: 3}
    return np.rot90(upright, quarters.get(orientation, 0))


def _strips(image: Image.Image) -> Iterator[tuple[int, Image.Image]]:
    rows = max(_STRIP_PIXELS // image.width, 1)
    for top in range(0, image.height, rows):
        yield top, image.crop((0, top, image.width, min(top + rows, image.height)))


def _scale(image: Image.Image) -> int:
    """Return what real numbers are multiplied with: those up to 1 mean white by 1."""
    if image.mode != "F":
        return 1
    highest = max(float(np.nan_to_num(np.asarray(strip)).max()) for _, strip in _strips(image))
    return 255 if highest <= 1 else 1


def _rgb(strip: Image.Image, scale: int) -> np.ndarray:
    if strip.mode.startswith("I") or strip.mode == "F":
        return _grey(np.asarray(strip), scale)[..., None]
    return np.asarray(strip if strip.mode == "RGB" else strip.convert("RGB"))


def _grey(values: np.ndarray, scale: int) -> np.ndarray:
    """Scale one channel of more than 8 bits, whole or real, to 8 bits."""
    if values.dtype.kind == "f":
        finite = np.nan_to_num(values)
        finite *= scale
        return np.clip(finite, 0, 255, out=finite).astype(np.uint8)
    return (np.clip(values, 0, 65535) // 257).astype(np.uint8)
