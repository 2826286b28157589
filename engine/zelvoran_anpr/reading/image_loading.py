"""Opens photos as upright 8-bit RGB arrays; every failure becomes one clear line."""

import io
import os
import warnings
from typing import BinaryIO

import numpy as np
from PIL import Image, ImageOps

from .errors import ReadError

# MPO files, which some telephones write, are opened by the JPEG plugin; naming MPO is an error.
FORMATS = ("JPEG", "PNG", "BMP", "DIB", "TIFF")
MAX_PIXELS = 150_000_000  # RGB of this size takes 450 MB

# Large photos meet the limit above and broken metadata says nothing about the pixels: the image
# library's warnings on both would only disturb the user's terminal.
warnings.filterwarnings("ignore", category=Image.DecompressionBombWarning)
warnings.filterwarnings("ignore", category=UserWarning, module=r"PIL\.")


def load_image(source: str | os.PathLike | bytes) -> np.ndarray:
    """Return an H x W x 3 uint8 RGB array of a photo, turned upright as its EXIF data says.

    `source` is a path, or the bytes of a JPEG, PNG, BMP or TIFF file. 16-bit grey becomes 8-bit
    by value // 257; alpha is dropped; of several pages the first counts. Raises ReadError.
    """
    name = "the photo" if isinstance(source, bytes) else _shown(source)
    with _stream(source, name) as stream, _opened(stream, name) as image:
        _check_size(image, name)
        return _decoded(image, name)


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
    try:
        return Image.open(stream, formats=FORMATS)
    except Image.DecompressionBombError:
        raise ReadError(_too_large(name)) from None
    except Image.UnidentifiedImageError:
        raise ReadError(f"Not a JPEG, PNG, BMP or TIFF photo: {name}") from None
    except Exception:  # noqa: BLE001  damaged headers raise many types
        raise ReadError(f"The photo is damaged: {name}") from None


def _check_size(image: Image.Image, name: str) -> None:
    if image.width * image.height > MAX_PIXELS:
        raise ReadError(_too_large(name))


def _too_large(name: str) -> str:
    limit = MAX_PIXELS // 1_000_000
    return f"The photo has more than {limit} megapixels, make it smaller first: {name}"


def _decoded(image: Image.Image, name: str) -> np.ndarray:
    try:
        image.load()
    except MemoryError:
        raise ReadError(f"Not enough memory to decode: {name}") from None
    except Exception:  # noqa: BLE001  damaged pixel data raises many types
        raise ReadError(f"The photo is damaged or cut off: {name}") from None
    return np.ascontiguousarray(_rgb(_upright(image)))


def _upright(image: Image.Image) -> Image.Image:
    try:
        return ImageOps.exif_transpose(image)
    except Exception:  # noqa: BLE001  broken EXIF data says nothing about the pixels
        return image


def _rgb(image: Image.Image) -> np.ndarray:
    if image.mode.startswith("I") or image.mode == "F":
        return np.repeat(_grey(np.asarray(image))[..., None], 3, axis=2)
    return np.asarray(image.convert("RGB"))


def _grey(values: np.ndarray) -> np.ndarray:
    """Scale one channel of more than 8 bits, whole or real, to 8 bits."""
    if values.dtype.kind == "f":
        finite = np.nan_to_num(values.astype(np.float64))
        return np.clip(finite * (255 if finite.max() <= 1 else 1), 0, 255).astype(np.uint8)
    return (np.clip(values.astype(np.int64), 0, 65535) // 257).astype(np.uint8)
