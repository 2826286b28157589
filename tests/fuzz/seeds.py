"""Writes small inputs of every kind for the fuzzers and for their replay: seeds.py FOLDER

One folder for each harness. Needs Pillow and NumPy, and is the same in every run.
"""

import io
import shutil
import struct
import sys
from collections.abc import Iterator
from pathlib import Path

import numpy as np
from PIL import Image

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "e2e" / "image_parity"))

import bmp_writer
import png_writer
import tiff_writer
from seed_texts import TEXTS

SIZE = WIDTH, HEIGHT = 17, 13
EXIF = b"Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x06\0\0\0\0\0\0\0"
XMP = b'http://ns.adobe.com/xap/1.0/\0<x tiff:Orientation="3"/>'
TIFF_COMPRESSIONS = ("raw", "tiff_lzw", "packbits", "tiff_adobe_deflate", "jpeg", "group3",
                     "group4", "lzma", "zstd")  # fmt: skip


def samples(count: int, bits: int = 8) -> np.ndarray:
    values = np.arange(HEIGHT * WIDTH * count).reshape(HEIGHT, WIDTH, count)
    return (values * 37) % (1 << bits)


def pictures() -> Iterator[Image.Image]:
    rgb = Image.fromarray(samples(3).astype(np.uint8))
    yield rgb
    for mode in ("L", "P", "1", "RGBA", "LA", "CMYK"):
        yield rgb.convert(mode)


def encoded(image: Image.Image, kind: str, **options) -> bytes | None:
    """The file's bytes, or None where the format has no such pictures."""
    stream = io.BytesIO()
    try:
        image.save(stream, kind, **options)
    except (OSError, RuntimeError, ValueError):
        return None
    return stream.getvalue()


def jpegs() -> Iterator[bytes | None]:
    for image in pictures():
        for options in ({}, {"progressive": True}, {"subsampling": 0}, {"exif": EXIF}):
            yield encoded(image, "JPEG", quality=90, **options)
    whole = encoded(next(pictures()), "JPEG", restart_marker_blocks=1) or b""
    yield whole[: len(whole) * 3 // 4]
    size = whole.index(b"\xff\xc0") + 5
    yield whole[:size] + struct.pack(">HH", 12200, 12200) + whole[size + 4 :]


def pngs(scratch: Path) -> Iterator[bytes | None]:
    for image in pictures():
        yield encoded(image, "PNG")
    profile = b"Raw profile type exif\0\0\nexif\n 36\n" + EXIF.hex().encode() + b"\n"
    notes = [(b"eXIf", EXIF[6:]), (b"tEXt", profile), (b"gAMA", b"\0\0\xb1\x8f")]
    for count, kind in ((1, png_writer.GREY), (3, png_writer.RGB), (4, png_writer.RGBA)):
        for bits in (1, 2, 4, 8, 16) if kind == png_writer.GREY else (8, 16):
            for interlaced in (False, True):
                file = png_writer.write_png(
                    scratch, samples(count, bits), kind, bits=bits, interlaced=interlaced,
                    before=notes,
                )  # fmt: skip
                yield file.read_bytes()


def bmps(scratch: Path) -> Iterator[bytes | None]:
    for image in pictures():
        yield encoded(image, "BMP")
    for bits in (1, 2, 4, 8):
        rows = bmp_writer.pack_indices(samples(1, bits)[:, :, 0], bits)
        palette = bytes(range(256)) * 4
        pixels = bmp_writer.join_rows(rows)
        file = bmp_writer.write_bmp(scratch, SIZE, bits, pixels, palette=palette[: 4 << bits])
        yield file.read_bytes()
    runs = b"\x04\x12\0\0\0\x03\x12\x30\x01\0\0\x02\x01\x01\x02\x05\0\x01"
    for bits, kind in ((8, bmp_writer.RLE8), (4, bmp_writer.RLE4)):
        file = bmp_writer.write_bmp(
            scratch, SIZE, bits, runs, palette=palette[: 4 << bits], compression=kind
        )
        yield file.read_bytes()
    for bits, masks in ((16, (0xF800, 0x7E0, 0x1F)), (32, (0xFF0000, 0xFF00, 0xFF))):
        pixels = bytes(range(256)) * 4
        for header in (40, 56, 124):
            file = bmp_writer.write_bmp(
                scratch, SIZE, bits, pixels, compression=bmp_writer.MASKS, masks=masks,
                header=header, top_down=True,
            )  # fmt: skip
            yield file.read_bytes()
    yield bmp_writer.write_bmp(scratch, SIZE, 24, bytes(52 * HEIGHT), header=12).read_bytes()


def tiffs(scratch: Path) -> Iterator[bytes | None]:
    for image in pictures():
        for compression in TIFF_COMPRESSIONS:
            yield encoded(image, "TIFF", compression=compression)
    layouts = ({}, {"big_endian": True}, {"planar": True}, {"tile": 16},
               {"compression": tiff_writer.PACKBITS}, {"tags": {274: [6]}})  # fmt: skip
    kinds = ((tiff_writer.RGB, 3), (tiff_writer.BLACK_IS_ZERO, 1), (tiff_writer.CMYK, 4), (6, 3),
             (8, 3))  # fmt: skip
    for photometric, count in kinds:
        for bits in (8, 16):
            for layout in layouts:
                file = tiff_writer.write_tiff(
                    scratch, samples(count, bits), photometric, bits=bits, **layout
                )
                yield file.read_bytes()


def labels() -> Iterator[bytes]:
    for head, box, text in (
        ((40, 40), (3, 20, 30, 30), "AB123"),
        ((255, 40), (-3, 2, 300, 30), "é漢\u0301"),
        ((9, 9), (2**31 - 1, -(2**31), 5, 5), ""),
    ):
        yield bytes(head) + struct.pack("<4i", *box) + text.encode()


def main(folder: Path) -> None:
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    scratch = folder / "scratch"
    seeds = {
        **TEXTS,
        "jpeg": jpegs(), "png": pngs(scratch), "bmp": bmps(scratch), "tiff": tiffs(scratch),
        "labels": labels(), "encoders": [b"\5\5abcdefg", b"\x15\x25\0\xff\x80"],
        "orientation": [EXIF, EXIF[6:], XMP, b"\nexif\n 36\n" + EXIF.hex().encode() + b"\n",
                        b"MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0"],
    }  # fmt: skip
    for name, contents in seeds.items():
        (folder / name).mkdir()
        for number, content in enumerate(filter(None, contents)):
            (folder / name / f"{number:03}").write_bytes(content)
    scratch.unlink()


if __name__ == "__main__":
    main(Path(sys.argv[1]))
