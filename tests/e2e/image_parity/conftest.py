"""Decoders to compare, and pictures to compare them on."""

from collections.abc import Callable
from pathlib import Path

import numpy as np
import pytest
from image_programs import pixels_of, run_tool
from PIL import Image, ImageOps


@pytest.fixture
def decode() -> Callable[[Path], np.ndarray]:
    """Decode a file with the native program."""

    def run(path: Path) -> np.ndarray:
        dump, errors = run_tool("decode_dump", path)
        assert errors == ""
        return pixels_of(dump)

    return run


@pytest.fixture
def save_as() -> Callable[[Path, Path], None]:
    """Decode one file and encode it as another with the native program."""

    def run(source: Path, target: Path) -> None:
        assert run_tool("decode_dump", source, target) == (b"", "")

    return run


@pytest.fixture
def reference() -> Callable[[Path], np.ndarray]:
    """Decode a file with Pillow, upright."""

    def run(path: Path) -> np.ndarray:
        with Image.open(path) as image:
            return np.asarray(ImageOps.exif_transpose(image).convert("RGB"))

    return run


@pytest.fixture
def photo() -> Image.Image:
    """A small picture with smooth and sharp parts, of odd size, the same in every run."""
    y, x = np.mgrid[0:37, 0:53]
    channels = [x * 255 // 52, y * 255 // 36, (x * y) % 256]
    pixels = np.stack(channels, axis=-1).astype(np.uint8)
    pixels[10:20, 15:40] = (250, 240, 30)
    return Image.fromarray(pixels)


@pytest.fixture
def noise() -> np.random.Generator:
    return np.random.default_rng(20)
