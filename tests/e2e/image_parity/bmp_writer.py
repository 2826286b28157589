"""Write BMP files of layouts that the image library reads but cannot write."""

import struct
from pathlib import Path

import numpy as np

PLAIN, RLE8, RLE4, MASKS = 0, 1, 2, 3


def pack_indices(indices: np.ndarray, bits: int) -> list[bytes]:
    """Rows of palette indices, not yet padded."""
    planes = [(indices >> shift) & 1 for shift in range(bits - 1, -1, -1)]
    packed = np.packbits(np.stack(planes, axis=-1).reshape(len(indices), -1), axis=1)
    return [row.tobytes() for row in packed]


def join_rows(rows: list[bytes], *, top_down: bool = False) -> bytes:
    ordered = rows if top_down else rows[::-1]
    return b"".join(row + bytes(-len(row) % 4) for row in ordered)


def write_bmp(
    path: Path,
    size: tuple[int, int],
    bits: int,
    pixels: bytes,
    *,
    palette: bytes = b"",
    compression: int = PLAIN,
    masks: tuple[int, ...] = (),
    header: int = 40,
    top_down: bool = False,
) -> Path:
    """Write ready-made `pixels`; `palette` holds blue, green, red and, from header 40 on, zero."""
    width, height = size
    if header == 12:
        info = struct.pack("<IHHHH", 12, width, height, 1, bits)
    else:
        signed = -height if top_down else height
        info = struct.pack("<IiiHHIIiiII", header, width, signed, 1, bits, compression,
                           len(pixels), 2835, 2835, len(palette) // 4, 0)  # fmt: skip
        info += struct.pack(f"<{len(masks)}I", *masks)
        info = info.ljust(header, b"\0")
    at = 14 + len(info) + len(palette)
    start = b"BM" + struct.pack("<IHHI", at + len(pixels), 0, 0, at)
    path.write_bytes(start + info + palette + pixels)
    return path
