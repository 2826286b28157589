"""Write PNG files of layouts that the image library reads but cannot write."""

import struct
import zlib
from collections.abc import Iterable
from pathlib import Path

import numpy as np

GREY, RGB, PALETTE, GREY_ALPHA, RGBA = 0, 2, 3, 4, 6
# Left, top, step right, step down of the seven interlace passes.
PASSES = [(0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2),
          (0, 1, 1, 2)]  # fmt: skip


def chunk(name: bytes, data: bytes) -> bytes:
    return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))


def filtered_rows(samples: np.ndarray, bits: int) -> bytes:
    """Rows of (height, width, samples), each behind its filter byte "none"."""
    if 0 in samples.shape:
        return b""
    rows = samples.reshape(len(samples), -1)
    if bits == 16:
        packed = rows.astype(">u2").view(np.uint8)
    elif bits == 8:
        packed = rows.astype(np.uint8)
    else:
        planes = [(rows >> shift) & 1 for shift in range(bits - 1, -1, -1)]
        packed = np.packbits(np.stack(planes, axis=-1).reshape(len(rows), -1), axis=1)
    return b"".join(b"\0" + row.tobytes() for row in packed)


def write_png(
    path: Path,
    samples: np.ndarray,
    colour_type: int,
    *,
    bits: int = 8,
    interlaced: bool = False,
    before: Iterable[tuple[bytes, bytes]] = (),
    after: Iterable[tuple[bytes, bytes]] = (),
) -> Path:
    """Write `samples` (height, width, samples per pixel) with more chunks around the pixels."""
    height, width, _ = samples.shape
    parts = [samples[y::dy, x::dx] for x, y, dx, dy in PASSES] if interlaced else [samples]
    data = zlib.compress(b"".join(filtered_rows(part, bits) for part in parts))
    header = struct.pack(">IIBBBBB", width, height, bits, colour_type, 0, 0, interlaced)
    chunks = [(b"IHDR", header), *before, (b"IDAT", data), *after, (b"IEND", b"")]
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + b"".join(chunk(*one) for one in chunks))
    return path
