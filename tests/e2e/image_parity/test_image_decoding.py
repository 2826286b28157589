"""Every common layout of the four formats decodes to the pixels that Pillow shows."""

import io
from collections.abc import Callable
from pathlib import Path

import numpy as np
import pytest
from PIL import Image

Decode = Callable[[Path], np.ndarray]

JPEG_OPTIONS = [
    {},
    {"progressive": True},
    {"subsampling": 0},
    {"subsampling": 1},
    {"subsampling": 2, "quality": 20},
    {"restart_marker_rows": 1},
]
COMPRESSIONS = [None, "tiff_lzw", "tiff_deflate", "tiff_adobe_deflate", "packbits"]


def difference(ours: np.ndarray, theirs: np.ndarray) -> int:
    assert ours.shape == theirs.shape
    return int(np.abs(ours.astype(int) - theirs).max())


@pytest.mark.parametrize("mode", ["L", "RGB", "CMYK"])
@pytest.mark.parametrize("options", JPEG_OPTIONS)
def test_jpeg(
    decode: Decode, reference: Decode, photo: Image.Image, tmp_path: Path, mode: str, options: dict
) -> None:
    path = tmp_path / "a.jpg"
    photo.convert(mode).save(path, **options)
    # Releases of the JPEG library may round differently.
    assert difference(decode(path), reference(path)) <= 1


@pytest.mark.parametrize("transform", [None, 0, 2])
def test_jpeg_of_inks(
    decode: Decode, reference: Decode, noise: np.random.Generator, tmp_path: Path, transform: int
) -> None:
    """Without the marker that tells the colour transform, with inks, and with ink luminance."""
    stream = io.BytesIO()
    inks = noise.integers(0, 256, (24, 32, 4), dtype=np.uint8)
    Image.fromarray(inks, "CMYK").save(stream, "JPEG", quality=95)
    data = bytearray(stream.getvalue())
    marker = data.index(b"\xff\xee\x00\x0eAdobe")
    if transform is None:
        del data[marker : marker + 16]
    else:
        data[marker + 15] = transform
    path = tmp_path / "a.jpg"
    path.write_bytes(data)
    assert difference(decode(path), reference(path)) <= 1


@pytest.mark.parametrize("mode", ["1", "L", "P", "RGB", "RGBA", "LA"])
def test_png(
    decode: Decode, reference: Decode, photo: Image.Image, tmp_path: Path, mode: str
) -> None:
    path = tmp_path / "a.png"
    photo.convert(mode).save(path)
    assert difference(decode(path), reference(path)) == 0


@pytest.mark.parametrize("mode", ["1", "L", "P", "RGB", "RGBA"])
def test_bmp(
    decode: Decode, reference: Decode, photo: Image.Image, tmp_path: Path, mode: str
) -> None:
    path = tmp_path / "a.bmp"
    photo.convert(mode).save(path)
    assert difference(decode(path), reference(path)) == 0


@pytest.mark.parametrize("mode", ["1", "L", "P", "RGB", "RGBA", "LA", "CMYK", "I", "F"])
@pytest.mark.parametrize("compression", COMPRESSIONS)
def test_tiff(
    decode: Decode,
    reference: Decode,
    photo: Image.Image,
    tmp_path: Path,
    mode: str,
    compression: str | None,
) -> None:
    path = tmp_path / "a.tif"
    photo.convert(mode).save(path, compression=compression)
    assert difference(decode(path), reference(path)) == 0


@pytest.mark.parametrize(("mode", "compression"), [("1", "group4"), ("1", "group3")])
def test_fax_tiff(
    decode: Decode,
    reference: Decode,
    photo: Image.Image,
    tmp_path: Path,
    mode: str,
    compression: str,
) -> None:
    path = tmp_path / "a.tif"
    photo.convert(mode).save(path, compression=compression)
    assert difference(decode(path), reference(path)) == 0


@pytest.mark.parametrize("mode", ["L", "RGB", "CMYK", "YCbCr"])
def test_tiff_with_lossy_colours(
    decode: Decode, reference: Decode, photo: Image.Image, tmp_path: Path, mode: str
) -> None:
    path = tmp_path / "a.tif"
    photo.convert(mode).save(path, compression=None if mode == "YCbCr" else "jpeg")
    assert difference(decode(path), reference(path)) <= 2


def test_first_page_of_a_tiff(decode: Decode, photo: Image.Image, tmp_path: Path) -> None:
    path = tmp_path / "a.tif"
    second = Image.new("RGB", (5, 5), (1, 2, 3))
    photo.save(path, save_all=True, append_images=[second])
    assert difference(decode(path), np.asarray(photo)) == 0


def test_content_counts_and_not_the_suffix(
    decode: Decode, photo: Image.Image, tmp_path: Path
) -> None:
    path = tmp_path / "a.jpg"
    photo.save(path, "PNG")
    assert difference(decode(path), np.asarray(photo)) == 0


def test_a_phone_photo_with_a_preview_behind_it(
    decode: Decode, reference: Decode, photo: Image.Image, tmp_path: Path
) -> None:
    path = tmp_path / "a.jpg"
    photo.save(path, "MPO", save_all=True, append_images=[photo.resize((9, 7))])
    assert difference(decode(path), reference(path)) <= 1
