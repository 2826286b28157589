"""Files that are missing, foreign, cut off or hostile get one clear line and never harm."""

import io
import os
import struct
from collections.abc import Callable
from pathlib import Path

import numpy as np
import png_writer as png
import pytest
import tiff_writer as tiff
from image_programs import Refusal, pixels_of, run_tool
from PIL import Image

Decode = Callable[[Path], np.ndarray]
FORMATS = ["PNG", "BMP", "TIFF"]


def refusal(path: Path) -> str:
    with pytest.raises(Refusal) as caught:
        run_tool("decode_dump", path)
    return str(caught.value)


def encoded(image: Image.Image, kind: str, **options: object) -> bytes:
    stream = io.BytesIO()
    image.save(stream, kind, **options)
    return stream.getvalue()


def test_missing(tmp_path: Path) -> None:
    path = tmp_path / "none.jpg"
    assert refusal(path) == f"[Errno 2] No such file or directory: '{path}'"


def test_folder(tmp_path: Path) -> None:
    assert refusal(tmp_path) == f"[Errno 21] Is a directory: '{tmp_path}'"


@pytest.mark.skipif(os.geteuid() == 0, reason="the administrator may read everything")
def test_unreadable(tmp_path: Path) -> None:
    path = tmp_path / "a.jpg"
    path.touch(mode=0)
    assert refusal(path) == f"[Errno 13] Permission denied: '{path}'"


@pytest.mark.parametrize("content", [b"", b"B", b"text", b"GIF89a" + bytes(40), bytes(100)])
def test_foreign(tmp_path: Path, content: bytes) -> None:
    path = tmp_path / "a.jpg"
    path.write_bytes(content)
    assert refusal(path) == f"cannot identify image file '{path}'"


@pytest.mark.parametrize(
    ("name", "shown"),
    [
        (b"a b.jpg", "'{}/a b.jpg'"),
        (b"it's.jpg", '"{}/it\'s.jpg"'),
        (b"two\nlines.jpg", "'{}/two\\nlines.jpg'"),
        (b"b\xff.jpg", "'{}/b\\udcff.jpg'"),
        ("京都.jpg".encode(), "'{}/京都.jpg'"),
    ],
)
def test_odd_names(
    decode: Decode, photo: Image.Image, tmp_path: Path, name: bytes, shown: str
) -> None:
    """Named on one line when they cannot be read, and read when they can."""
    path = Path(os.fsdecode(bytes(tmp_path) + b"/" + name))
    path.touch()
    assert refusal(path) == f"cannot identify image file {shown.format(tmp_path)}"
    path.write_bytes(encoded(photo, "PNG"))
    assert np.array_equal(decode(path), np.asarray(photo))


@pytest.mark.parametrize("kind", FORMATS)
@pytest.mark.parametrize("share", [0.1, 0.3, 0.6, 0.9])
def test_truncated(photo: Image.Image, tmp_path: Path, kind: str, share: float) -> None:
    data = encoded(photo, kind)
    path = tmp_path / "a"
    path.write_bytes(data[: int(len(data) * share)])
    assert refusal(path) == "image file is truncated"


def cut_off(tmp_path: Path, share: float, **options: object) -> tuple[Path, Path]:
    """A JPEG file of noise, of which any share of the bytes shows as large a share of the rows."""
    photo = Image.effect_noise((320, 240), 90).convert("RGB")
    data = encoded(photo, "JPEG", **options)
    whole, cut = tmp_path / "whole.jpg", tmp_path / "cut.jpg"
    whole.write_bytes(data)
    cut.write_bytes(data[: int(len(data) * share)])
    return whole, cut


@pytest.mark.parametrize(
    ("options", "share"), [({}, 0.01), ({}, 0.2), ({"progressive": True}, 0.01)]
)
def test_a_jpeg_that_shows_too_little_is_truncated(
    tmp_path: Path, options: dict[str, bool], share: float
) -> None:
    assert refusal(cut_off(tmp_path, share, **options)[1]) == "image file is truncated"


@pytest.mark.parametrize("share", [0.35, 0.6, 0.95])
def test_a_jpeg_is_shown_as_far_as_it_goes(decode: Decode, tmp_path: Path, share: float) -> None:
    whole, cut = cut_off(tmp_path, share)
    dump, errors = run_tool("decode_dump", cut)
    assert errors == "image file is truncated\n"
    rows = int(240 * share) - 32
    assert np.array_equal(pixels_of(dump)[:rows], decode(whole)[:rows])


def test_a_progressive_jpeg_is_shown_coarsely(decode: Decode, tmp_path: Path) -> None:
    whole, cut = cut_off(tmp_path, 0.7, progressive=True)
    dump, errors = run_tool("decode_dump", cut)
    assert errors == "image file is truncated\n"
    assert np.abs(pixels_of(dump).astype(int) - decode(whole)).mean() < 40


def test_a_tiny_jpeg_of_endless_size_is_refused_before_memory_is_taken(tmp_path: Path) -> None:
    data = encoded(Image.new("RGB", (8, 8)), "JPEG", progressive=True)
    at = data.index(b"\xff\xc2") + 5
    path = tmp_path / "a.jpg"
    path.write_bytes(data[:at] + struct.pack(">HH", 12000, 12000) + data[at + 4 :])
    assert refusal(path) == "image file is truncated"


def test_jpeg_that_lacks_only_its_end_marker(
    decode: Decode, photo: Image.Image, tmp_path: Path
) -> None:
    data = encoded(photo, "JPEG")
    assert data.endswith(b"\xff\xd9")
    (tmp_path / "whole.jpg").write_bytes(data)
    (tmp_path / "cut.jpg").write_bytes(data[:-2])
    assert np.array_equal(decode(tmp_path / "cut.jpg"), decode(tmp_path / "whole.jpg"))


TOO_LARGE = "image size (60000 x 60000 pixels) exceeds the limit of 150000000 pixels"


def test_huge_png(tmp_path: Path) -> None:
    path = png.write_png(tmp_path / "a.png", np.zeros((1, 1, 1)), png.GREY)
    data = bytearray(path.read_bytes())
    header = struct.pack(">IIBBBBB", 60000, 60000, 8, 0, 0, 0, 0)
    path.write_bytes(data[:8] + png.chunk(b"IHDR", header) + data[33:])
    assert refusal(path) == TOO_LARGE


def test_huge_tiff(tmp_path: Path) -> None:
    tags = {256: [60000], 257: [60000]}
    path = tiff.write_tiff(tmp_path / "a.tif", np.zeros((1, 1, 1)), tiff.BLACK_IS_ZERO, tags=tags)
    assert refusal(path) == TOO_LARGE


def test_huge_bmp(tmp_path: Path) -> None:
    data = bytearray(encoded(Image.new("RGB", (2, 2)), "BMP"))
    data[18:26] = struct.pack("<ii", 60000, 60000)
    path = tmp_path / "a.bmp"
    path.write_bytes(data)
    assert refusal(path) == TOO_LARGE


def test_huge_jpeg(tmp_path: Path) -> None:
    data = encoded(Image.new("L", (8, 8)), "JPEG")
    at = data.index(b"\xff\xc0") + 5
    path = tmp_path / "a.jpg"
    path.write_bytes(data[:at] + struct.pack(">HH", 60000, 60000) + data[at + 4 :])
    assert refusal(path) == TOO_LARGE
