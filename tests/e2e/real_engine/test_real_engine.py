"""The program with its own engine: a photo in, plates out; and photos that are none."""

import json
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

pytest.importorskip("onnxruntime")
Image = pytest.importorskip("PIL.Image")

ROOT = Path(__file__).resolve().parents[3]
PLATE = "ZV17ANP"


@pytest.fixture
def real(zv):
    """The program with the engine of the interpreter that runs the tests, or of the source tree."""
    probe = [sys.executable, "-c", "import zelvoran_anpr.reading"]
    installed = subprocess.run(probe, capture_output=True, cwd="/", check=False).returncode == 0
    path = None if installed else str(ROOT / "engine")
    shutil.copy(ROOT / "examples" / "car.jpg", zv.folder / "car.jpg")
    return lambda *words: zv(*words, env={"PYTHONPATH": path})


def test_the_example_photo_is_read(real, zv):
    status, out, err = real("car.jpg", "--json", "r.json", "--output", "seen.png")
    assert (status, err) == (0, "")
    assert f"car.jpg: 1 plates: {PLATE} (" in out
    (plate,) = json.loads((zv.folder / "r.json").read_text())
    left, top, right, bottom = plate["bbox"]
    assert plate["ocr_text"] == PLATE
    assert 0.5 <= plate["ocr_conf"] <= 1
    with Image.open(zv.folder / "seen.png") as seen:
        assert 0 <= left < right <= seen.width and 0 <= top < bottom <= seen.height
        assert seen.convert("RGB").getpixel((int(left), int(bottom) - 4)) == (0, 255, 0)


def test_the_first_example_of_the_readme_is_what_the_program_prints(real):
    """But for the confidence, which changes with the models."""
    shown = (ROOT / "README.md").read_text().split("```\n$ zv-anpr car.jpg\n")[1].split("```")[0]
    out = real("car.jpg").out
    number = re.compile(r"(?<=\()\d\.\d\d(?=\))")
    assert number.sub("N", shown) == number.sub("N", out)


def test_a_photo_held_sideways_is_read_upright(real, zv):
    with Image.open(zv.folder / "car.jpg") as photo:
        exif = Image.Exif()
        exif[0x0112] = 8
        photo.rotate(-90, expand=True).save(zv.folder / "side.jpg", exif=exif, quality=95)
    assert f"side.jpg: 1 plates: {PLATE} (" in real("side.jpg", "--region", "eup").out


def test_photos_that_are_none_cost_one_line_each(real, zv):
    data = (zv.folder / "car.jpg").read_bytes()
    (zv.folder / "empty.jpg").touch()
    (zv.folder / "stub.jpg").write_bytes(data[: len(data) // 8])
    (zv.folder / "text.png").write_text("no picture")
    with open(zv.folder / "huge.bmp", "wb") as huge:
        os.truncate(huge.fileno(), 3 << 30)
    names = ["empty.jpg", "stub.jpg", "text.png", "huge.bmp"]
    status, out, err = real("read", *names, "car.jpg")
    assert status == 0
    for name in names:
        (line,) = [line for line in out.splitlines() if line.startswith(f"{name}: ")]
        assert line.startswith(f"{name}: Error: ") and len(line) > len(f"{name}: Error: ") + 10
    assert f"car.jpg: 1 plates: {PLATE} (" in out
    assert out.endswith("Total: 1 plates from 5 images\n")
    assert "Traceback" not in out + err


def test_a_photo_that_is_cut_off_is_read_as_far_as_it_goes(real, zv):
    data = (zv.folder / "car.jpg").read_bytes()
    (zv.folder / "cut.jpg").write_bytes(data[: 9 * len(data) // 10])
    status, out, err = real("read", "cut.jpg")
    assert status == 0
    assert f"cut.jpg: 1 plates: {PLATE} (" in out
    assert err.startswith("The photo is cut off, ") and err.count("\n") == 1


@pytest.mark.parametrize(
    "words, told",
    [
        (["--detector-model", "9000p"], "9000p"),
        (["--ocr-model", "fp64"], "fp64"),
        (["--region", "atlantis"], "atlantis"),
        (["--backend", "directml"], "directml"),
    ],
)
def test_what_the_engine_does_not_have_is_said_clearly(real, words, told):
    out = real("car.jpg", *words).out
    (line,) = [line for line in out.splitlines() if line.startswith("car.jpg: ")]
    assert line.startswith("car.jpg: Error: ") and told in line
