"""Official characters out of a folder: found by their codes, cut to ink, used where they exist."""

from random import Random

import numpy as np
import pytest
from PIL import Image, ImageDraw

from training.fonts import catalogue
from training.plates import drawings
from training.plates.face import draw_face
from training.plates.glyphs import CAP_HEIGHT, glyph


@pytest.fixture
def folder(tmp_path):
    kind = tmp_path / "P1-1"
    kind.mkdir()
    dark = Image.new("RGB", (60, 90), "white")
    ImageDraw.Draw(dark).rectangle((10, 20, 39, 79), fill="black")
    dark.save(kind / "AA.png")
    clear = Image.new("RGBA", (60, 90), (255, 255, 255, 0))
    ImageDraw.Draw(clear).rectangle((10, 20, 39, 79), fill=(255, 255, 255, 255))
    clear.save(kind / "7.png")
    clear.save(kind / "ALDF.png")
    return tmp_path


@pytest.mark.parametrize("text", ["가", "7", "서울"])
def test_a_drawing_is_cut_to_its_ink_whether_dark_or_transparent(folder, text):
    mask = drawings.draw(drawings.drawing(str(folder), "P1-1"), text, 64)
    assert mask.size == (32, 64) and np.asarray(mask).min() > 250


def test_what_is_not_drawn_is_told(folder):
    name = drawings.drawing(str(folder), "P1-1")
    assert drawings.is_drawing(name) and not drawings.is_drawing("/fonts/A.ttf")
    assert [drawings.shows(name, text) for text in ("7", "8", "나", "가")] == [1, 0, 0, 1]
    with pytest.raises(ValueError, match="나"):
        drawings.draw(name, "나", 64)
    assert glyph(name, "7").height == CAP_HEIGHT


def test_plates_with_missing_drawings_are_drawn_with_fonts(folder, font_folder):
    fonts = catalogue(font_folder, folder)
    plain = catalogue(font_folder)
    faces = [[draw_face(f, Random(seed), "kr") for seed in range(12)] for f in (fonts, plain)]
    assert all(face.text for face in faces[0])
    assert any(a.picture.tobytes() != b.picture.tobytes() for a, b in zip(*faces, strict=True))
