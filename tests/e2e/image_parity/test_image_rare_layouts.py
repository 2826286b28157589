"""Layouts that Pillow cannot write, made by hand; 16-bit samples are scaled to 8, not cut."""

import itertools
from collections.abc import Callable
from pathlib import Path

import bmp_writer as bmp
import numpy as np
import png_writer as png
import pytest
import tiff_writer as tiff

Decode = Callable[[Path], np.ndarray]
HEIGHT, WIDTH = 37, 53
DEPTHS = [1, 2, 4, 8, 16]
EXTRA_SAMPLES, COLOUR_MAP = 338, 320


def to_bytes(samples: np.ndarray, bits: int) -> np.ndarray:
    """Samples of `bits` bits spread over 0..255, rounded to nearest."""
    return np.rint(samples * 255 / (2**bits - 1)).astype(np.uint8)


def to_rgb(samples: np.ndarray, photometric: int) -> np.ndarray:
    """What (height, width, samples) bytes look like."""
    if photometric == tiff.CMYK:
        paper = 255 - samples[:, :, 3:].astype(int)
        return (paper - np.rint(samples[:, :, :3] * paper / 255)).astype(np.uint8)
    if photometric == tiff.WHITE_IS_ZERO:
        samples = 255 - samples
    return np.broadcast_to(samples[:, :, :3], (*samples.shape[:2], 3))


LAYOUTS = list(itertools.product([False, True], [False, True], [None, 16]))


@pytest.mark.parametrize(("big_endian", "planar", "tile"), LAYOUTS)
@pytest.mark.parametrize("bits", DEPTHS)
@pytest.mark.parametrize(
    ("photometric", "count"),
    [
        (tiff.BLACK_IS_ZERO, 1),
        (tiff.WHITE_IS_ZERO, 1),
        (tiff.RGB, 3),
        (tiff.RGB, 4),
        (tiff.CMYK, 4),
    ],
)
def test_tiff(
    decode: Decode,
    noise: np.random.Generator,
    tmp_path: Path,
    big_endian: bool,
    planar: bool,
    tile: int | None,
    bits: int,
    photometric: int,
    count: int,
) -> None:
    samples = noise.integers(0, 1 << bits, (HEIGHT, WIDTH, count))
    compression = [tiff.UNCOMPRESSED, tiff.DEFLATE, tiff.PACKBITS][bits % 3]
    path = tiff.write_tiff(
        tmp_path / "a.tif", samples, photometric, bits=bits, big_endian=big_endian,
        planar=planar, tile=tile, compression=compression,
    )  # fmt: skip
    assert np.array_equal(decode(path), to_rgb(to_bytes(samples, bits), photometric))


@pytest.mark.parametrize("bits", [1, 2, 4, 8])
def test_tiff_palette(
    decode: Decode, reference: Decode, noise: np.random.Generator, tmp_path: Path, bits: int
) -> None:
    colours = noise.integers(0, 65536, 3 << bits).tolist()
    indices = noise.integers(0, 1 << bits, (HEIGHT, WIDTH, 1))
    path = tiff.write_tiff(
        tmp_path / "a.tif", indices, tiff.PALETTE, bits=bits, tags={COLOUR_MAP: colours}
    )
    assert np.array_equal(decode(path), reference(path))


@pytest.mark.parametrize("kind", [0, 1, 2])
def test_tiff_alpha_is_dropped(
    decode: Decode, reference: Decode, noise: np.random.Generator, tmp_path: Path, kind: int
) -> None:
    """Kind 1 stores colours multiplied with alpha, which is undone first."""
    samples = noise.integers(0, 256, (HEIGHT, WIDTH, 4))
    samples[:, ::5, 3] = 0
    samples[:, 1::5, 3] = 255
    path = tiff.write_tiff(tmp_path / "a.tif", samples, tiff.RGB, tags={EXTRA_SAMPLES: [kind]})
    assert np.array_equal(decode(path), reference(path))


PNG_TYPES = [(png.GREY, 1), (png.RGB, 3), (png.GREY_ALPHA, 2), (png.RGBA, 4)]


@pytest.mark.parametrize("interlaced", [False, True])
@pytest.mark.parametrize(
    ("kind", "count", "bits"),
    [(*one, bits) for one in PNG_TYPES for bits in DEPTHS if bits >= 8 or one[1] == 1],
)
def test_png(
    decode: Decode,
    noise: np.random.Generator,
    tmp_path: Path,
    kind: int,
    count: int,
    bits: int,
    interlaced: bool,
) -> None:
    samples = noise.integers(0, 1 << bits, (HEIGHT, WIDTH, count))
    path = png.write_png(tmp_path / "a.png", samples, kind, bits=bits, interlaced=interlaced)
    colours = samples if count >= 3 else samples[:, :, :1]
    assert np.array_equal(decode(path), to_rgb(to_bytes(colours, bits), tiff.RGB))


@pytest.mark.parametrize("transparent", [False, True])
@pytest.mark.parametrize("bits", [1, 2, 4, 8])
def test_png_palette(
    decode: Decode, noise: np.random.Generator, tmp_path: Path, bits: int, transparent: bool
) -> None:
    palette = noise.integers(0, 256, (1 << bits, 3), dtype=np.uint8)
    indices = noise.integers(0, 1 << bits, (HEIGHT, WIDTH, 1))
    chunks = [(b"PLTE", palette.tobytes())] + [(b"tRNS", b"\x00\x40")] * transparent
    path = png.write_png(tmp_path / "a.png", indices, png.PALETTE, bits=bits, before=chunks)
    assert np.array_equal(decode(path), palette[indices[:, :, 0]])


@pytest.mark.parametrize("header", [12, 40, 108, 124])
@pytest.mark.parametrize("bits", [1, 4, 8])
def test_bmp_palette(
    decode: Decode, noise: np.random.Generator, tmp_path: Path, bits: int, header: int
) -> None:
    palette = noise.integers(0, 256, (1 << bits, 3), dtype=np.uint8)
    indices = noise.integers(0, 1 << bits, (HEIGHT, WIDTH))
    entries = [bytes(entry[::-1]) + bytes(header > 12) for entry in palette]
    path = bmp.write_bmp(
        tmp_path / "a.bmp", (WIDTH, HEIGHT), bits, bmp.join_rows(bmp.pack_indices(indices, bits)),
        palette=b"".join(entries), header=header,
    )  # fmt: skip
    assert np.array_equal(decode(path), palette[indices])


@pytest.mark.parametrize("top_down", [False, True])
@pytest.mark.parametrize(
    ("bits", "header", "masks"),
    [
        (16, 40, ()),
        (16, 40, (0xF800, 0x07E0, 0x001F)),
        (16, 40, (0x7C00, 0x03E0, 0x001F)),
        (24, 40, ()),
        (32, 40, ()),
        (32, 40, (0xFF0000, 0xFF00, 0xFF)),
        (32, 56, (0xFF000000, 0xFF0000, 0xFF00, 0xFF)),
        (32, 124, (0xFF, 0xFF00, 0xFF0000, 0xFF000000)),
    ],
)
def test_bmp_true_colour(
    decode: Decode,
    reference: Decode,
    noise: np.random.Generator,
    tmp_path: Path,
    bits: int,
    header: int,
    masks: tuple[int, ...],
    top_down: bool,
) -> None:
    rows = noise.integers(0, 256, (HEIGHT, WIDTH * bits // 8), dtype=np.uint8)
    path = bmp.write_bmp(
        tmp_path / "a.bmp", (WIDTH, HEIGHT), bits,
        bmp.join_rows([row.tobytes() for row in rows], top_down=top_down), masks=masks,
        compression=bmp.MASKS if masks else bmp.PLAIN, header=header, top_down=top_down,
    )  # fmt: skip
    assert np.array_equal(decode(path), reference(path))


GREYS = np.repeat(np.arange(256, dtype=np.uint8)[:, None], 3, axis=1)
COLOURS = (np.arange(16, dtype=np.uint8)[:, None] * np.array([1, 16, 17], np.uint8)) ^ 5


@pytest.mark.parametrize("top_down", [False, True])
@pytest.mark.parametrize(
    ("kind", "runs", "rows"),
    [
        pytest.param(
            bmp.RLE8,
            [4, 9, 0, 3, 1, 2, 3, 0, 0, 0, 7, 200, 0, 0, 7, 5, 0, 1],
            ["9 9 9 9 1 2 3", "200 200 200 200 200 200 200", "5 5 5 5 5 5 5"],
            id="runs and literals",
        ),
        pytest.param(
            bmp.RLE8,
            [2, 7, 0, 2, 3, 1, 2, 99, 0, 1],
            ["7 7 0 0 0 0 0", "0 0 0 0 0 99 99", "0 0 0 0 0 0 0"],
            id="a jump and an early end",
        ),
        pytest.param(
            bmp.RLE8,
            [9, 7, 0, 0, 9, 8, 0, 0, 9, 6, 0, 0],
            ["7 7 7 7 7 7 7", "8 8 8 8 8 8 8", "6 6 6 6 6 6 6"],
            id="runs that are too long, no end",
        ),
        pytest.param(
            bmp.RLE4,
            [5, 0x1F, 2, 0x77, 0, 0, 0, 7, 0x12, 0x34, 0x56, 0x70, 0, 0, 7, 0xC3, 0, 1],
            ["1 15 1 15 1 7 7", "1 2 3 4 5 6 7", "12 3 12 3 12 3 12"],
            id="half bytes",
        ),
    ],
)
def test_bmp_runs(
    decode: Decode, tmp_path: Path, kind: int, runs: list[int], rows: list[str], top_down: bool
) -> None:
    bits, palette = (8, GREYS) if kind == bmp.RLE8 else (4, COLOURS)
    entries = b"".join(bytes(entry[::-1]) + b"\0" for entry in palette)
    path = bmp.write_bmp(
        tmp_path / "a.bmp", (7, 3), bits, bytes(runs), palette=entries, compression=kind,
        top_down=top_down,
    )  # fmt: skip
    indices = np.array([row.split() for row in rows], int)
    assert np.array_equal(decode(path), palette[indices if top_down else indices[::-1]])
