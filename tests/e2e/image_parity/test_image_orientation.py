"""Photos that were taken with a turned camera come out upright, wherever the file says so."""

from collections.abc import Callable
from pathlib import Path

import numpy as np
import png_writer as png
import pytest
import tiff_writer as tiff
from PIL import Image, ImageOps

Decode = Callable[[Path], np.ndarray]
ORIENTATION, XMP = 274, 700
VALUES = list(range(10))  # 0 and 9 are nonsense and change nothing


def exif_of(value: int) -> Image.Exif:
    exif = Image.Exif()
    exif[ORIENTATION] = value
    return exif


def turned(image: Image.Image, value: int) -> np.ndarray:
    """The upright picture, by Pillow, of pixels with this orientation."""
    copy = image.copy()
    copy.getexif()[ORIENTATION] = value
    return np.asarray(ImageOps.exif_transpose(copy))


def xmp_packet(value: int, *, element: bool = False) -> bytes:
    note = f"<tiff:Orientation>{value}<" if element else f'<a tiff:Orientation="{value}"/>'
    return f"<x:xmpmeta>{note}</x:xmpmeta>".encode()


@pytest.mark.parametrize("value", VALUES)
@pytest.mark.parametrize("suffix", ["jpg", "png", "tif"])
def test_exif(
    decode: Decode,
    reference: Decode,
    photo: Image.Image,
    tmp_path: Path,
    value: int,
    suffix: str,
) -> None:
    path = tmp_path / f"a.{suffix}"
    photo.save(path, exif=exif_of(value))
    upright = reference(path)
    assert np.abs(decode(path).astype(int) - upright).max() <= 1
    if suffix != "jpg":
        assert np.array_equal(upright, turned(photo, value))


@pytest.mark.parametrize("element", [False, True])
@pytest.mark.parametrize("suffix", ["jpg", "tif"])
def test_xmp(
    decode: Decode,
    reference: Decode,
    photo: Image.Image,
    tmp_path: Path,
    suffix: str,
    element: bool,
) -> None:
    path = tmp_path / f"a.{suffix}"
    packet = xmp_packet(6, element=element)
    if suffix == "jpg":
        photo.save(path, xmp=packet)
    else:
        photo.save(path, tiffinfo={XMP: packet})
    assert decode(path).shape == (53, 37, 3)
    assert np.abs(decode(path).astype(int) - reference(path)).max() <= 1


def test_exif_wins_over_xmp(decode: Decode, photo: Image.Image, tmp_path: Path) -> None:
    path = tmp_path / "a.jpg"
    photo.save(path, exif=exif_of(1), xmp=xmp_packet(6))
    assert decode(path).shape == (37, 53, 3)


@pytest.mark.parametrize("behind", [False, True])
def test_png_chunks(
    decode: Decode, reference: Decode, photo: Image.Image, tmp_path: Path, behind: bool
) -> None:
    """The EXIF chunk may stand before or behind the pixels."""
    chunks = [(b"eXIf", exif_of(8).tobytes().removeprefix(b"Exif\0\0"))]
    where = {"after" if behind else "before": chunks}
    path = png.write_png(tmp_path / "a.png", np.asarray(photo), png.RGB, **where)
    assert np.array_equal(decode(path), turned(photo, 8))
    assert np.array_equal(decode(path), reference(path))


def test_png_raw_profile(
    decode: Decode, reference: Decode, photo: Image.Image, tmp_path: Path
) -> None:
    exif = exif_of(3).tobytes()
    text = f"\nexif\n{len(exif):8}\n{exif.hex()}\n".encode()
    chunks = [(b"tEXt", b"Raw profile type exif\0" + text)]
    path = png.write_png(tmp_path / "a.png", np.asarray(photo), png.RGB, before=chunks)
    assert np.array_equal(decode(path), turned(photo, 3))
    assert np.array_equal(decode(path), reference(path))


def test_png_xmp(decode: Decode, reference: Decode, photo: Image.Image, tmp_path: Path) -> None:
    chunks = [(b"iTXt", b"XML:com.adobe.xmp\0\0\0\0\0" + xmp_packet(6))]
    path = png.write_png(tmp_path / "a.png", np.asarray(photo), png.RGB, before=chunks)
    assert np.array_equal(decode(path), turned(photo, 6))
    assert np.array_equal(decode(path), reference(path))


@pytest.mark.parametrize("big_endian", [False, True])
@pytest.mark.parametrize("value", VALUES)
def test_tiff_tag(
    decode: Decode,
    reference: Decode,
    photo: Image.Image,
    tmp_path: Path,
    value: int,
    big_endian: bool,
) -> None:
    path = tiff.write_tiff(
        tmp_path / "a.tif", np.asarray(photo), tiff.RGB, big_endian=big_endian,
        tags={ORIENTATION: [value]},
    )  # fmt: skip
    assert np.array_equal(decode(path), reference(path))
