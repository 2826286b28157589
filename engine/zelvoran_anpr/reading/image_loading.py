"""Opens photos as upright 8-bit RGB arrays; every failure becomes one clear line."""

import io
import os
import warnings
from collections.abc import Callable
from typing import BinaryIO

import numpy as np
from PIL import (
    BmpImagePlugin,
    Image,
    JpegImagePlugin,
    PngImagePlugin,
    TiffImagePlugin,
)

from .cut_off_jpeg import completed, is_jpeg
from .errors import PhotoTooLarge, ReadError
from .photo import Photo
from .pixels import upright_picture, upright_rgb

MAX_PIXELS = 150_000_000  # RGB of this size takes 450 MB

# Opened by their plugins: the library's general door has a limit of pixels of its own, which is
# one for the whole process. The JPEG plugin also opens the several pictures of some telephones.
_BMP, _DIB = BmpImagePlugin.BmpImageFile, BmpImagePlugin.DibImageFile
_TIFF = TiffImagePlugin.TiffImageFile
_OPENERS = (
    (b"\xff\xd8\xff", JpegImagePlugin.jpeg_factory),
    (b"\x89PNG\r\n\x1a\n", PngImagePlugin.PngImageFile),
    (b"BM", _BMP),
    *((start, _TIFF) for start in TiffImagePlugin.PREFIXES),
    *((bytes([size, 0, 0, 0]), _DIB) for size in (12, 40, 52, 56, 64, 108, 124)),  # headers' sizes
)  # fmt: skip

# Broken metadata says nothing about the pixels: the image library's warning would only disturb the
# user's terminal.
warnings.filterwarnings("ignore", category=UserWarning, module=r"PIL\.")


def load_image(source: str | os.PathLike | bytes, max_pixels: int | None = None) -> np.ndarray:
    """Return an H x W x 3 uint8 RGB array of a photo, turned upright as its EXIF data says.

    `source` is a path, or the bytes of a JPEG, PNG, BMP or TIFF file. 16-bit grey becomes 8-bit
    by value // 257; alpha is dropped; of several pages the first counts. A JPEG that is cut off is
    read as far as it goes, with a word in the log. Raises PhotoTooLarge for more than `max_pixels`
    (MAX_PIXELS when None), else ReadError.
    """
    name = "the photo" if isinstance(source, bytes) else _shown(source)
    with _stream(source, name) as stream, _opened(stream, name) as image:
        _check_size(image, name, MAX_PIXELS if max_pixels is None else max_pixels)
        pixels = _loaded(image, stream, name)
        return upright_rgb(pixels)


def open_photo(
    source: str | os.PathLike | bytes, longest: int, admit: Callable[[int], None] | None = None
) -> Photo:
    """Return what `load_image` would, of large JPEGs only a coarser version at first.

    Its longer side has at least `longest` pixels; what a Photo needs finer it unpacks from the
    bytes that were read here. Raises as `load_image` does. With `admit` the photo is read before
    somebody asks for it: that is called with the number of pixels before they are unpacked, and a
    JPEG that is cut off is an error, as the word in the log belongs where it is asked for.
    """
    name = "the photo" if isinstance(source, bytes) else _shown(source)
    with _stream(source, name) as stream, _opened(stream, name) as image:
        _check_size(image, name, MAX_PIXELS)
        if is_jpeg(image) and max(image.size) >= 2 * longest:
            stream.seek(0)
            return _coarse(stream.read(), name, longest / max(image.size), admit)
        return Photo(upright_picture(_admitted(image, stream, name, admit)))


def _coarse(data: bytes, name: str, scale: float, admit: Callable | None) -> Photo:
    def finer(least: float) -> Image.Image:
        return _decoded(data, name, least, admit)[0]

    picture, size = _decoded(data, name, scale, admit)
    return Photo(picture, size, finer)


def _decoded(
    data: bytes, name: str, scale: float, admit: Callable | None
) -> tuple[Image.Image, tuple[int, int]]:
    """Return a JPEG upright with at least `scale` of its pixels per side, and its own size.

    The decoder leaves out what only finer pictures need, which saves most of the time.
    """
    with io.BytesIO(data) as stream, _opened(stream, name) as image:
        width, height = image.size
        image.draft(None, (int(np.ceil(width * scale)), int(np.ceil(height * scale))))
        loaded = _admitted(image, stream, name, admit, width * height)
        picture = upright_picture(loaded)
    is_turned = loaded.size != loaded.size[::-1] and picture.size == loaded.size[::-1]
    return picture, (height, width) if is_turned else (width, height)


def _admitted(
    image: Image.Image, stream: BinaryIO, name: str, admit: Callable | None, own: int = 0
) -> Image.Image:
    """Return the image with its pixels decoded; `own` is how many it has where they are fewer."""
    if admit is None:
        return _loaded(image, stream, name)
    # The passes of a progressive JPEG need all of it at once, however coarse the result.
    admit(own if own and "progressive" in image.info else image.width * image.height)
    image.load()
    return image


def _shown(path: str | os.PathLike) -> str:
    """Return a path as printable text of one line, whatever bytes it holds."""
    text = os.fsdecode(path).encode("utf-8", "backslashreplace").decode("utf-8")
    return "".join(c if c.isprintable() else ascii(c)[1:-1] for c in text)


def _stream(source: str | os.PathLike | bytes, name: str) -> BinaryIO:
    """Open the source without reading it: a file may be huge and no photo at all."""
    try:
        stream = io.BytesIO(source) if isinstance(source, bytes) else open(source, "rb")  # noqa: SIM115
    except FileNotFoundError:
        raise ReadError(f"No such file: {name}") from None
    except IsADirectoryError:
        raise ReadError(f"This is a folder, not a photo: {name}") from None
    except PermissionError:
        raise ReadError(f"No permission to read: {name}") from None
    except (OSError, ValueError) as error:
        reason = getattr(error, "strerror", None) or str(error)
        raise ReadError(f"Cannot read {name}: {reason}") from None
    if _is_empty(stream):
        stream.close()
        raise ReadError(f"The file is empty: {name}")
    return stream


def _is_empty(stream: BinaryIO) -> bool:
    empty = stream.seek(0, os.SEEK_END) == 0
    stream.seek(0)
    return empty


def _opened(stream: BinaryIO, name: str) -> Image.Image:
    head = stream.read(8)
    stream.seek(0)
    for start, opener in _OPENERS:
        if head.startswith(start):
            try:
                return opener(stream)
            except Exception:  # noqa: BLE001  damaged headers raise many types
                raise ReadError(f"The photo is damaged: {name}") from None
    raise ReadError(f"Not a JPEG, PNG, BMP or TIFF photo: {name}")


def _check_size(image: Image.Image, name: str, limit: int) -> None:
    if image.width * image.height > limit:
        raise PhotoTooLarge(
            f"The photo has more than {limit / 1e6:g} megapixels, make it smaller first: {name}",
            *image.size,
        )


def _loaded(image: Image.Image, stream: BinaryIO, name: str) -> Image.Image:
    """Return the image with its pixels decoded; what is there of a JPEG that is cut off."""
    try:
        image.load()
        return image
    except MemoryError:
        raise ReadError(f"Not enough memory to decode: {name}") from None
    except Exception:  # noqa: BLE001  damaged pixel data raises many types
        rest = completed(stream, name) if is_jpeg(image) else None
        if rest is None:
            raise ReadError(f"The photo is damaged or cut off: {name}") from None
        return rest
