"""Damaged files of every layout end in a picture or in one clear error, never in a crash.

Worth most with programs built by the preset `asan`: ZV_ANPR_TEST_TOOLS=build/asan.
"""

from collections.abc import Callable
from pathlib import Path

import bmp_writer as bmp
import numpy as np
import png_writer as png
import pytest
import tiff_writer as tiff
from image_programs import run_tool
from PIL import Image

COUNT = 150
Writer = Callable[[Path, Image.Image], object]


def saved(mode: str, suffix: str, **options: object) -> Writer:
    return lambda path, photo: photo.convert(mode).save(path.with_suffix(suffix), **options)


def tiff_layout(**options: object) -> Writer:
    return lambda path, photo: tiff.write_tiff(
        path.with_suffix(".tif"), np.asarray(photo), tiff.RGB, **options
    )


def write_runs(path: Path, photo: Image.Image) -> None:
    runs = bytes([4, 9, 0, 3, 1, 2, 3, 0, 0, 2, 1, 1, 7, 200, 0, 0, 7, 5, 0, 1])
    bmp.write_bmp(
        path.with_suffix(".bmp"), (7, 4), 8, runs, palette=bytes(1024), compression=bmp.RLE8
    )


def write_interlaced(path: Path, photo: Image.Image) -> None:
    png.write_png(path.with_suffix(".png"), np.asarray(photo), png.RGB, interlaced=True)


EXIF = Image.Exif()
EXIF[274] = 6
LAYOUTS: dict[str, Writer] = {
    "jpeg": saved("RGB", ".jpg", exif=EXIF),
    "progressive jpeg": saved("RGB", ".jpg", progressive=True),
    "grey jpeg": saved("L", ".jpg", restart_marker_rows=1),
    "cmyk jpeg": saved("CMYK", ".jpg"),
    "png": saved("RGB", ".png", exif=EXIF),
    "interlaced png": write_interlaced,
    "palette png": saved("P", ".png"),
    "bmp": saved("RGB", ".bmp"),
    "palette bmp": saved("P", ".bmp"),
    "bmp with runs": write_runs,
    "tiff": saved("RGB", ".tif"),
    "lzw tiff": saved("RGB", ".tif", compression="tiff_lzw"),
    "jpeg tiff": saved("RGB", ".tif", compression="jpeg"),
    "deflate tiff": saved("L", ".tif", compression="tiff_deflate"),
    "fax tiff": saved("1", ".tif", compression="group4"),
    "palette tiff": saved("P", ".tif"),
    "ycbcr tiff": saved("YCbCr", ".tif"),
    "tiled tiff": tiff_layout(tile=16),
    "planar tiff": tiff_layout(planar=True, big_endian=True),
    "packbits tiff": tiff_layout(compression=tiff.PACKBITS, bits=16),
}


@pytest.mark.parametrize("layout", LAYOUTS)
def test_damaged(photo: Image.Image, tmp_path: Path, layout: str) -> None:
    LAYOUTS[layout](tmp_path / "whole", photo)
    (whole,) = tmp_path.iterdir()
    output, errors = run_tool("decode_mutations", whole, COUNT, tmp_path / "damaged")
    assert errors == ""
    pictures = int(output.split()[0])
    assert pictures < COUNT, "none of the damage was seen: are the variants damaged at all?"
