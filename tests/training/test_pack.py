"""The pack for another machine: smaller, and as good to train with."""

from random import Random

import numpy as np
import pytest
from PIL import Image

from training.detector.photos import known_plates
from training.fonts import catalogue
from training.pack import characters_in_use, pack_fonts, pack_photos
from training.plates.face import draw_face


def test_photos_shrink_with_their_boxes(tmp_path):
    photo = Image.new("RGB", (800, 400), "black")
    photo.paste("white", (200, 100, 400, 160))
    photo.save(tmp_path / "a b.png")
    (tmp_path / "t.csv").write_text("file,left,top,right,bottom\na b.png,200,100,400,160\n")
    pack_photos(known_plates(tmp_path / "t.csv"), tmp_path / "out", 400)
    [known] = known_plates(tmp_path / "out" / "known.csv")
    picture = Image.open(known.file)
    assert picture.size == (400, 200) and known.boxes.tolist() == [[100, 50, 200, 80]]
    assert np.asarray(picture.crop((104, 54, 196, 76))).min() > 230


def test_packed_fonts_are_smaller_and_draw_the_same(font_folder, tmp_path):
    pytest.importorskip("fontTools")
    pack_fonts(font_folder, tmp_path)
    [before], [after] = list(font_folder.iterdir()), list(tmp_path.iterdir())
    assert after.stem == before.stem and after.stat().st_size < before.stat().st_size
    one, other = (
        draw_face(catalogue(folder), Random(3), "na") for folder in (font_folder, tmp_path)
    )
    assert one.picture.tobytes() == other.picture.tobytes()


def test_the_characters_of_all_scripts_are_in_use():
    assert set("AZ09京가さ品دÉ.-") <= set(characters_in_use())
