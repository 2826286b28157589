"""Photos for the detector: plates are exchanged, pasted and painted over where they should be."""

from random import Random

import numpy as np
import pytest
from PIL import Image

from training.detector import photos, scenes
from training.detector.close_up import close_up
from training.detector.evaluate import labelled
from training.detector.tilt import strong_tilt

_BOX = [150.0, 120.0, 270.0, 150.0]


@pytest.fixture
def known(tmp_path) -> list[photos.Known]:
    photo = Image.new("RGB", (480, 300), (90, 120, 90))
    photo.paste((250, 0, 250), tuple(map(int, _BOX)))
    photo.save(tmp_path / "a.png")
    (tmp_path / "known.csv").write_text("file,left,top,right,bottom\na.png,150,120,270,150\n")
    return photos.known_plates(tmp_path / "known.csv")


def _magenta(picture: Image.Image | np.ndarray) -> int:
    pixels = np.asarray(picture).astype(int)
    return int(((pixels[..., 0] > 200) & (pixels[..., 1] < 60) & (pixels[..., 2] > 200)).sum())


def test_the_table_gives_files_beside_it_and_their_boxes(known, tmp_path):
    assert [photo.file for photo in known] == [tmp_path / "a.png"]
    assert known[0].boxes.tolist() == [_BOX]


@pytest.mark.parametrize("seed", range(12))
def test_a_view_shows_the_plate_where_it_says_or_not_at_all(known, seed):
    part, boxes = photos.view(known[0], 256, (0.5, 1.2), Random(seed))
    assert part.size == (256, 256)
    if len(boxes):
        left, top, right, bottom = boxes[0]
        assert abs(_magenta(part) - (right - left) * (bottom - top)) < 0.2 * _magenta(part) + 30
    else:
        assert _magenta(part) < 20


def test_erasing_paints_a_box_with_its_surroundings(known):
    photo = Image.open(known[0].file)
    photos.erase(photo, np.array(_BOX))
    assert _magenta(photo) == 0


def test_exchanged_plates_have_corners_near_the_old_place(known, fonts, monkeypatch):
    monkeypatch.setattr(scenes, "_EXCHANGED", 1.0)
    rng = Random(3)
    scene = scenes._Scene(Image.open(known[0].file))
    scenes._exchange(scene, np.array(_BOX), fonts, rng)
    assert _magenta(scene.picture) == 0
    middle = scene.corners[0].mean(axis=0)
    assert middle == pytest.approx([210, 135], abs=3)


@pytest.mark.parametrize("seed", range(10))
def test_a_sample_has_boxes_that_enclose_their_corners(known, fonts, seed):
    picture, boxes, corners = scenes.sample(known, fonts, Random(seed), 192, (0.4, 1.0))
    assert picture.shape == (192, 192, 3) and picture.dtype == np.uint8
    assert boxes.shape == (len(corners), 4) and corners.shape == (len(boxes), 4, 2)
    for box, quad in zip(boxes, corners, strict=True):
        assert (box[2:] > box[:2]).all()
        if quad.any():
            around = np.clip(np.concatenate([quad.min(axis=0), quad.max(axis=0)]), 0, 192)
            assert (box[:2] >= around[:2] - 1e-6).all() and (box[2:] <= around[2:] + 1e-6).all()
            assert np.prod(box[2:] - box[:2]) > 0.8 * np.prod(around[2:] - around[:2])


@pytest.mark.parametrize("seed", range(12))
def test_a_close_up_shows_most_of_a_large_plate(fonts, seed):
    ground = Image.new("RGB", (256, 256), (90, 120, 90))
    picture, [box], [quad] = close_up(ground, fonts, Random(seed))
    assert picture.size == (256, 256)
    assert (box[2:] - box[:2]).max() > 0.25 * 256
    whole = np.ptp(quad, axis=0)
    assert ((box[2:] - box[:2]) > 0.6 * whole).all()


def test_plates_are_at_times_strongly_turned():
    tilts = np.abs([strong_tilt(Random(seed)) for seed in range(400)])
    assert 45 < tilts[:, 0].max() <= 60 and 28 < tilts[:, 2].max() <= 60
    assert np.median(tilts[:, 2]) < 8


def test_a_seed_repeats_a_sample(known, fonts):
    one, other = (scenes.sample(known, fonts, Random(5), 128, (0.4, 1.0))[0] for _ in range(2))
    assert (one == other).all()


def test_labelled_photos_give_their_set_and_box(tmp_path):
    (tmp_path / "us").mkdir()
    Image.new("RGB", (50, 40)).save(tmp_path / "us" / "a.png")
    (tmp_path / "plates.csv").write_text("file,x,y,width,height,text\nus/a.png,5,6,20,10,A1\n")
    [(subset, photo, box)] = labelled(tmp_path)
    assert (subset, photo.size, box.tolist()) == ("us", (50, 40), [5, 6, 25, 16])
