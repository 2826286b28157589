"""Rendered test sets: only what can be read, the same again, several groups in one table."""

import csv
from random import Random

import numpy as np
import pytest
from PIL import Image, ImageFilter

from training.reader import testset
from training.scene.shot import Shot


@pytest.fixture
def clear(fonts):
    return testset.readable(fonts, "eup", Random(3))


def _with(shot: Shot, picture: Image.Image) -> Shot:
    return Shot(picture, shot.corners, shot.face, shot.area)


def test_blurred_pale_and_small_pictures_cannot_be_read(clear):
    shot, text = clear
    assert testset.can_be_read(shot, text)
    blurred = shot.picture.filter(ImageFilter.GaussianBlur(shot.picture.height / 8))
    pale = Image.blend(shot.picture, Image.new("RGB", shot.picture.size, (128,) * 3), 0.98)
    small = Shot(shot.picture, shot.corners / 20, shot.face, shot.area)
    assert not any(
        testset.can_be_read(s, text) for s in (_with(shot, blurred), _with(shot, pale), small)
    )


def test_a_set_is_the_same_again_and_joins_others(font_folder, tmp_path):
    def make(folder, group, count):
        options = ["--fonts", font_folder, "--group", group, "--count", count, "--out", folder]
        args = testset.arguments().parse_args(list(map(str, options)))
        testset.add_to_table(folder / "plates.csv", group, testset.write(args))

    for folder in (tmp_path / "a", tmp_path / "b"):
        make(folder, "na", 3)
        make(folder, "sa", 2)
        make(folder, "na", 2)
    one, other = (
        (folder / "plates.csv").read_text(encoding="utf-8")
        for folder in (tmp_path / "a", tmp_path / "b")
    )
    assert one == other
    rows = list(csv.DictReader(one.splitlines()))
    assert [row["file"].split("/")[0] for row in rows] == ["sa", "sa", "na", "na"]
    for row in rows:
        pictures = [Image.open(tmp_path / side / row["file"]) for side in "ab"]
        assert (np.asarray(pictures[0]) == np.asarray(pictures[1])).all()
        assert int(row["x"]) > 0 and int(row["x"]) + int(row["width"]) < pictures[0].width
