"""Write TIFF files of layouts that the image library reads but cannot write."""

import struct
import zlib
from collections.abc import Callable, Iterator
from pathlib import Path

import numpy as np

BLACK_IS_ZERO, WHITE_IS_ZERO, RGB, PALETTE, CMYK = 1, 0, 2, 3, 5
UNCOMPRESSED, DEFLATE, PACKBITS = 1, 8, 32773


def pack_rows(samples: np.ndarray, bits: int, order: str) -> bytes:
    """Rows of `samples` (rows, values) as the bytes of a strip or tile."""
    if bits == 16:
        return samples.astype(f"{order}u2").tobytes()
    if bits == 8:
        return samples.astype(np.uint8).tobytes()
    planes = [(samples >> shift) & 1 for shift in range(bits - 1, -1, -1)]
    return np.packbits(np.stack(planes, axis=-1).reshape(len(samples), -1), axis=1).tobytes()


def packbits(data: bytes) -> bytes:
    """Literal packets only: valid, if not small."""
    parts = (data[i : i + 128] for i in range(0, len(data), 128))
    return b"".join(bytes([len(part) - 1]) + part for part in parts)


COMPRESSORS: dict[int, Callable[[bytes], bytes]] = {
    UNCOMPRESSED: bytes,
    DEFLATE: zlib.compress,
    PACKBITS: packbits,
}


def cut_blocks(plane: np.ndarray, tile: int | None, rows: int) -> Iterator[np.ndarray]:
    """The strips or (padded) tiles of one plane (height, width, samples), as (rows, values)."""
    height, width, count = plane.shape
    if tile is None:
        for y in range(0, height, rows):
            yield plane[y : y + rows].reshape(-1, width * count)
        return
    padded = np.pad(plane, ((0, -height % tile), (0, -width % tile), (0, 0)))
    for y in range(0, height, tile):
        for x in range(0, width, tile):
            yield padded[y : y + tile, x : x + tile].reshape(tile, tile * count)


def write_tiff(
    path: Path,
    samples: np.ndarray,
    photometric: int,
    *,
    bits: int = 8,
    big_endian: bool = False,
    planar: bool = False,
    tile: int | None = None,
    rows: int = 7,
    compression: int = UNCOMPRESSED,
    tags: dict[int, list[int]] | None = None,
) -> Path:
    """Write `samples` (height, width, samples per pixel); `tags` are extra ones of 16 bits."""
    order = ">" if big_endian else "<"
    height, width, count = samples.shape
    planes = [samples[:, :, i : i + 1] for i in range(count)] if planar else [samples]
    blocks = [
        COMPRESSORS[compression](pack_rows(block, bits, order))
        for plane in planes
        for block in cut_blocks(plane, tile, rows)
    ]
    offsets = [8 + sum(map(len, blocks[:i])) for i in range(len(blocks))]
    sizes = [len(block) for block in blocks]
    fields: dict[int, tuple[str, list[int]]] = {
        256: ("H", [width]),
        257: ("H", [height]),
        258: ("H", [bits] * count),
        259: ("H", [compression]),
        262: ("H", [photometric]),
        277: ("H", [count]),
        284: ("H", [2 if planar else 1]),
    }
    if tile is None:
        fields |= {273: ("I", offsets), 278: ("H", [rows]), 279: ("I", sizes)}
    else:
        fields |= {322: ("H", [tile]), 323: ("H", [tile]), 324: ("I", offsets), 325: ("I", sizes)}
    fields |= {tag: ("H", values) for tag, values in (tags or {}).items()}
    data = b"".join(blocks)
    data += bytes(len(data) % 2)
    path.write_bytes(
        file_header(order, 8 + len(data)) + data + directory(order, 8 + len(data), fields)
    )
    return path


def file_header(order: str, directory_at: int) -> bytes:
    return (b"II" if order == "<" else b"MM") + struct.pack(f"{order}HI", 42, directory_at)


def directory(order: str, start: int, fields: dict[int, tuple[str, list[int]]]) -> bytes:
    """One image file directory at offset `start`, long values behind it."""
    entries, values = b"", b""
    values_at = start + 2 + 12 * len(fields) + 4
    for tag, (kind, numbers) in sorted(fields.items()):
        data = struct.pack(f"{order}{len(numbers)}{kind}", *numbers)
        entries += struct.pack(f"{order}HHI", tag, {"H": 3, "I": 4}[kind], len(numbers))
        if len(data) <= 4:
            entries += data.ljust(4, b"\0")
        else:
            entries += struct.pack(f"{order}I", values_at + len(values))
            values += data + bytes(len(data) % 2)
    return struct.pack(f"{order}H", len(fields)) + entries + bytes(4) + values
