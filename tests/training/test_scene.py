"""Photographed plates: geometry, sizes, the straightened crop, the contact sheet."""

import subprocess
import sys
from pathlib import Path
from random import Random

import numpy as np
import pytest
from PIL import Image

from training.plates.design import Design
from training.plates.face import Face
from training.plates.lettering import Mark
from training.scene import crop, geometry, looks, scenery
from training.scene import shot as shooting
from training.scene.light import weather
from training.scene.mounting import mount
from training.scene.vehicle import park
from training.scene.visible import text_in

_SQUARE = geometry.corners(0, 0, 10, 10)


def test_a_homography_sends_the_corners_to_their_targets():
    target = np.array([[1, 2], [30, 5], [28, 20], [3, 18]], float)
    matrix = geometry.homography(_SQUARE, target)
    assert geometry.project(matrix, _SQUARE) == pytest.approx(target)


def test_no_tilt_changes_nothing_and_a_turn_narrows():
    assert geometry.tilted(_SQUARE, (0, 0, 0), 3) == pytest.approx(_SQUARE)
    turned = geometry.tilted(_SQUARE, (45, 0, 0), 1000)
    assert np.ptp(turned[:, 0]) == pytest.approx(10 * np.cos(np.pi / 4), rel=0.01)
    assert np.ptp(turned[:, 1]) == pytest.approx(10, rel=0.01)


@pytest.mark.parametrize("seed", range(8))
def test_the_plate_is_as_high_as_asked_and_wholly_on_the_picture(fonts, seed):
    shot = shooting.shoot(fonts, Random(seed), "eup", 24)
    heights = np.hypot(*(shot.corners[[3, 2]] - shot.corners[[0, 1]]).T)
    assert heights.mean() == pytest.approx(24, rel=0.01)
    assert (shot.corners >= 0).all() and (shot.corners <= shot.picture.size).all()


def _green_face() -> Face:
    design = Design("eup", "xx", ("L",))
    return Face(Image.new("RGB", (300, 70), (0, 255, 0)), "A", design)


def test_straightening_finds_the_plate_again(monkeypatch, fonts):
    monkeypatch.setattr(shooting, "draw_face", lambda *_: _green_face())
    monkeypatch.setattr(shooting, "weather", lambda picture, _: picture)
    shot = shooting.shoot(fonts, Random(12), detail=40)
    inner = np.asarray(crop.straighten(shot.picture, shot.corners))[8:-8, 12:-12].astype(int)
    greener = inner[..., 1] - inner[..., [0, 2]].max(axis=2)
    assert (greener > 60).mean() > 0.9


def test_a_mounted_plate_lies_in_its_box(fonts):
    for seed in range(20):
        scene, box = mount(_green_face(), fonts, Random(seed))
        middle = scene.crop(box).getpixel(((box[2] - box[0]) // 2, (box[3] - box[1]) // 2))
        assert middle == (0, 255, 0)


def test_a_frame_leaves_the_characters_of_a_tall_plate_uncovered(fonts):
    design = Design("jp", "jp", ("L/L",), aspect=2.0, box=(0.05, 0.07, 0.95, 0.95))
    face = Face(Image.new("RGB", (200, 100), (0, 255, 0)), "A", design)
    for seed in range(40):
        scene, (left, top, right, bottom) = mount(face, fonts, Random(seed))
        text = scene.crop((left + 30, top + 10, right - 30, bottom - 8))
        assert text.getcolors() == [(text.width * text.height, (0, 255, 0))]


def test_weather_keeps_the_shape_and_changes_the_light():
    grey = np.full((20, 60, 3), 128, np.float32)
    seen = [weather(grey, Random(seed)) for seed in range(30)]
    assert all(picture.shape == grey.shape for picture in seen)
    assert np.std([picture.mean() for picture in seen]) > 10


_PLATE = geometry.corners(20, 10, 220, 60)


def _marked(*boxes, minor: bool = False) -> Face:
    marks = tuple(Mark(c, box, minor) for c, box in zip("ABC", boxes, strict=False))
    return Face(
        Image.new("RGB", (200, 50)), "ABC"[: len(boxes)], Design("eup", "xx", ("L",)), marks
    )


def test_the_text_is_what_the_area_shows():
    face = _marked((10, 5, 50, 45), (80, 5, 120, 45), (150, 5, 190, 45))
    assert text_in(face, _PLATE, _PLATE) == "ABC"
    assert text_in(face, _PLATE, geometry.corners(55, 10, 220, 60)) == "BC"
    assert text_in(face, _PLATE, geometry.corners(20, 10, 180, 60)) == "AB"
    assert text_in(face, _PLATE, geometry.corners(35, 0, 205, 90)) == "ABC"
    assert text_in(face, _PLATE, geometry.corners(20, 45, 220, 60)) == ""


def test_minor_characters_are_not_asked_for_where_they_are_tiny():
    face = _marked((10, 5, 50, 20), minor=True)
    assert text_in(face, _PLATE, _PLATE) == "A"
    assert text_in(face, _PLATE / 3, _PLATE / 3) == ""
    assert text_in(_marked((10, 5, 50, 20)), _PLATE / 3, _PLATE / 3) == "A"
    uneven = _marked((10, 5, 50, 20), (80, 5, 120, 30), minor=True)
    assert text_in(uneven, _PLATE / 2, _PLATE / 2) == "AB"
    assert text_in(uneven, _PLATE / 3, _PLATE / 3) == ""


@pytest.mark.parametrize("look", [looks.near, looks.found, looks.whole, looks.skewed])
def test_a_look_is_about_the_plate(look):
    for seed in range(200):
        area = look(_PLATE, Random(seed))
        centre = area.mean(axis=0) - _PLATE.mean(axis=0)
        assert (np.abs(centre) < 0.36 * np.ptp(_PLATE, axis=0)).all()


@pytest.mark.parametrize("look", [looks.near, looks.found, looks.whole, looks.skewed])
def test_a_photo_shows_all_that_its_look_takes(fonts, look):
    for seed in range(15):
        shot = shooting.photographed(_green_face(), fonts, Random(seed), 40, look)
        assert (shot.area >= 0).all() and (shot.area <= shot.picture.size).all()


def test_whole_pictures_have_any_border_and_at_times_cut_the_plate():
    lefts = [20 - looks.whole(_PLATE, Random(seed))[0, 0] for seed in range(300)]
    assert max(lefts) > 0.3 * 200 and min(lefts) < -0.2 * 200
    assert 0.02 < np.mean(np.array(lefts) < 0) < 0.2


def test_a_sample_is_what_the_reader_takes(fonts):
    picture, text, group = crop.sample(fonts, Random(5))
    assert picture.shape == (crop.HEIGHT, crop.WIDTH, 3) and picture.dtype == np.uint8
    assert text and group
    assert (crop.sample(fonts, Random(5))[0] == picture).all()


@pytest.fixture
def photos(tmp_path):
    Image.new("RGB", (300, 200), (250, 0, 250)).save(tmp_path / "a.png")
    return scenery.photos(tmp_path)


def test_photos_stand_around_plates_and_are_no_plates(fonts, photos, monkeypatch):
    monkeypatch.setattr(shooting, "weather", lambda picture, _: picture)
    shots = [
        shooting.photographed(_green_face(), fonts, Random(s), 40, photos=photos) for s in range(12)
    ]
    around = [np.asarray(shot.picture)[3, 3].astype(int) for shot in shots]
    magenta = sum(r > 150 and g < 90 and b > 150 for r, g, b in around)
    assert 1 <= magenta < 12
    sign = Face(Image.new("RGB", (90, 60), (0, 90, 0)), "", Design("", "", ("",)))
    samples = [crop.shown(sign, fonts, Random(seed), photos) for seed in range(12)]
    assert {text + group for _, text, group in samples} == {""}
    assert any((picture[..., 0] > 200).mean() > 0.95 for picture, _, _ in samples)


def test_a_folder_without_photos_is_named(tmp_path):
    with pytest.raises(FileNotFoundError, match="no photos"):
        scenery.photos(tmp_path)
    assert scenery.photos(None) == ()


def test_what_cannot_be_seen_has_no_text(fonts, monkeypatch):
    monkeypatch.setattr(shooting, "weather", lambda picture, _: np.zeros_like(picture))
    monkeypatch.setattr(shooting, "photograph", lambda picture, *_: picture)
    assert crop.shown(_green_face(), fonts, Random(1))[1:] == ("", "")


def test_the_contact_sheet_shows_real_and_rendered_plates(font_folder, tmp_path):
    (tmp_path / "us").mkdir()
    Image.new("RGB", (200, 120), (200, 10, 10)).save(tmp_path / "us" / "a.jpg")
    (tmp_path / "plates.csv").write_text("file,x,y,width,height,text\nus/a.jpg,50,40,80,40,A1\n")
    sheet = tmp_path / "sheet.png"
    subprocess.run(
        [sys.executable, "-m", "training.contact_sheet", "--fonts", font_folder, "--photos",
         tmp_path, "--set", "us", "--out", sheet],
        cwd=Path(__file__).resolve().parents[2], check=True,
    )  # fmt: skip
    page = np.asarray(Image.open(sheet)).astype(int)
    red = (page[..., 0] > 150) & (page[..., 1:].max(axis=2) < 60)
    assert red.sum() > 5000


def test_a_parked_plate_lies_in_its_box_inside_the_outline(fonts):
    for seed in range(12):
        car, outline, box = park(_green_face(), fonts, Random(seed))
        assert car.size == outline.size
        assert np.asarray(outline.crop(box)).min() == 255
        inner = np.asarray(car.crop(box))[2:-2, 2:-2]
        assert (inner == (0, 255, 0)).all()
