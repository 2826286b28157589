"""What is saved, in each format, as Pillow reads it back and as Pillow itself would save it."""

import os
import resource
import signal
import subprocess
from collections.abc import Callable
from pathlib import Path

import numpy as np
import pytest
from image_programs import Refusal, run_tool, tool
from PIL import Image

Save = Callable[[Path, Path], None]


@pytest.fixture
def source(photo: Image.Image, tmp_path: Path) -> Path:
    path = tmp_path / "source.png"
    photo.save(path)
    return path


@pytest.mark.parametrize(
    ("suffix", "kind"),
    [("png", "PNG"), ("bmp", "BMP"), ("tif", "TIFF"), ("tiff", "TIFF"), ("PNG", "PNG")],
)
def test_lossless(
    save_as: Save, photo: Image.Image, source: Path, tmp_path: Path, suffix: str, kind: str
) -> None:
    target = tmp_path / f"out.{suffix}"
    save_as(source, target)
    with Image.open(target) as image:
        assert (image.format, image.mode) == (kind, "RGB")
        assert np.array_equal(np.asarray(image), np.asarray(photo))


@pytest.mark.parametrize("suffix", ["jpg", "jpeg", "jpe", "jfif", "JPG"])
def test_jpeg_like_pillow(
    save_as: Save, photo: Image.Image, source: Path, tmp_path: Path, suffix: str
) -> None:
    save_as(source, tmp_path / f"out.{suffix}")
    photo.save(tmp_path / "pillow.jpg")
    with (
        Image.open(tmp_path / f"out.{suffix}") as ours,
        Image.open(tmp_path / "pillow.jpg") as theirs,
    ):
        assert ours.quantization == theirs.quantization
        assert ours.layer == theirs.layer
        assert np.abs(np.asarray(ours).astype(int) - np.asarray(theirs)).max() <= 1


def test_tiff_is_not_compressed(save_as: Save, source: Path, tmp_path: Path) -> None:
    save_as(source, tmp_path / "out.tif")
    with Image.open(tmp_path / "out.tif") as image:
        assert image.info["compression"] == "raw"


@pytest.mark.parametrize(
    ("name", "suffix"),
    [("a.xyz", ".xyz"), ("a.GIF", ".gif"), ("a", ""), (".jpg", ""), ("a.b/c", "")],
)
def test_unknown_suffix(
    save_as: Save, source: Path, tmp_path: Path, name: str, suffix: str
) -> None:
    """Judged before the file is opened: neither folder nor file need exist, and none appears."""
    with pytest.raises(Refusal) as caught:
        save_as(source, tmp_path / name)
    assert str(caught.value) == f"unknown file extension: {suffix}"
    assert not (tmp_path / name).exists()


def test_missing_folder(save_as: Save, source: Path, tmp_path: Path) -> None:
    target = tmp_path / "none" / "a.png"
    with pytest.raises(Refusal) as caught:
        save_as(source, target)
    assert str(caught.value) == f"[Errno 2] No such file or directory: '{target}'"


def test_folder_in_the_way(save_as: Save, source: Path, tmp_path: Path) -> None:
    target = tmp_path / "a.png"
    target.mkdir()
    with pytest.raises(Refusal) as caught:
        save_as(source, target)
    assert str(caught.value) == f"[Errno 21] Is a directory: '{target}'"


SUFFIXES = ["jpg", "png", "bmp", "tif"]


@pytest.mark.skipif(not os.path.exists("/dev/full"), reason="no /dev/full here")
@pytest.mark.parametrize("suffix", SUFFIXES)
def test_full_disk(save_as: Save, source: Path, tmp_path: Path, suffix: str) -> None:
    target = tmp_path / f"a.{suffix}"
    target.symlink_to("/dev/full")
    with pytest.raises(Refusal) as caught:
        save_as(source, target)
    assert str(caught.value) == f"[Errno 28] No space left on device: '{target}'"
    assert target.is_symlink()


def allow_only_small_files() -> None:
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (20000, 20000))


@pytest.mark.parametrize("existing", [False, True])
@pytest.mark.parametrize("suffix", SUFFIXES)
def test_no_half_written_file_stays(tmp_path: Path, suffix: str, existing: bool) -> None:
    source, target = tmp_path / "source.png", tmp_path / f"a.{suffix}"
    Image.effect_noise((300, 200), 90).save(source)
    if existing:
        target.write_bytes(b"old")
    command = [tool("decode_dump"), source, target]
    done = subprocess.run(
        command, capture_output=True, check=False, preexec_fn=allow_only_small_files
    )
    assert done.returncode == 1
    assert done.stderr.decode() == f"[Errno 27] File too large: '{target}'\n"
    assert target.exists() == existing


def test_jpeg_has_a_largest_size(tmp_path: Path) -> None:
    source = tmp_path / "wide.png"
    Image.new("1", (70000, 1)).save(source)
    with pytest.raises(Refusal, match="^cannot write JPEG: .*65500"):
        run_tool("decode_dump", source, tmp_path / "a.jpg")
    assert not (tmp_path / "a.jpg").exists()
