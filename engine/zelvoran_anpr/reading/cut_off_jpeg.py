"""Reads JPEG files whose end is missing, as viewers do: what lies before the cut is shown."""

import io
import logging
from typing import BinaryIO

import numpy as np
from PIL import Image, JpegImagePlugin

_END = b"\xff\xd9"  # the end-of-image marker, at which the decoder gives what it has
_USABLE = 0.25  # share of the rows that must show something

_log = logging.getLogger("zelvoran_anpr.reading")


def is_jpeg(image: Image.Image) -> bool:
    return isinstance(image, JpegImagePlugin.JpegImageFile)


def completed(stream: BinaryIO, name: str) -> Image.Image | None:
    """Return the picture of a JPEG whose data is cut off, None when too little of it is there.

    The missing rows are of one colour. Logs a line that says so; without a handler it appears on
    standard error.
    """
    stream.seek(0)
    try:
        image = JpegImagePlugin.jpeg_factory(io.BytesIO(stream.read() + _END))
        image.load()
    except Exception:  # noqa: BLE001  damaged pixel data raises many types
        return None
    share = _rows_shown(np.asarray(image.convert("L"))) / image.height
    if share < _USABLE:
        return None
    _log.warning("The photo is cut off, %d %% of it was read: %s", round(100 * share), name)
    return image


def _rows_shown(grey: np.ndarray) -> int:
    """Return the number of rows (H x W) above the part in which nothing changes any more."""
    changing = np.flatnonzero((grey[1:] != grey[:-1]).any(axis=1))
    return int(changing[-1]) + 1 if len(changing) else 0
