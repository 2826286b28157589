"""Looks at the head of an upload before anything is unpacked."""

import io
import warnings

import numpy as np
from PIL import (
    BmpImagePlugin,
    Image,
    ImageDraw,
    ImageFont,
    JpegImagePlugin,
    PngImagePlugin,
    TiffImagePlugin,
)

from .engine import ImageRefused

# A format counts only once its plugin is loaded, which the library does not do by itself for all.
_FORMATS = tuple(
    plugin.format
    for plugin in (
        JpegImagePlugin.JpegImageFile,  # also the several-picture files of some telephones
        PngImagePlugin.PngImageFile,
        BmpImagePlugin.BmpImageFile,
        TiffImagePlugin.TiffImageFile,
    )
)


def check_photo(data: bytes, max_pixels: int) -> None:
    """Raise ImageRefused unless this is a photo in a known format with at most so many pixels."""
    if not data:
        raise ImageRefused("The image is empty", 400)
    try:
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")  # its own size warning: the limit here is stricter
            with Image.open(io.BytesIO(data), formats=_FORMATS) as image:
                width, height = image.size
    except Image.DecompressionBombError:
        raise ImageRefused(_too_large(max_pixels), 413) from None
    except Exception as error:  # a broken file can make the library raise anything
        raise ImageRefused("The file is no JPEG, PNG, BMP or TIFF image") from error
    if width * height > max_pixels:
        raise ImageRefused(f"{_too_large(max_pixels)}, and this one has {width} x {height}", 413)


def warm_up_picture() -> np.ndarray:
    """Return a drawn plate (uint8, height x width x RGB), so that detector and reader both run."""
    image = Image.new("RGB", (640, 480), (70, 75, 80))
    draw = ImageDraw.Draw(image)
    draw.rectangle((210, 210, 430, 260), fill="white", outline="black", width=3)
    draw.text((228, 212), "ABC 1234", fill="black", font=ImageFont.load_default(size=40))
    return np.asarray(image)


def _too_large(max_pixels: int) -> str:
    return f"The image may have at most {max_pixels / 1e6:g} megapixels"
