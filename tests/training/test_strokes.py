"""Letters drawn with strokes: whole, alike by name, told apart by eye and by number."""

from itertools import combinations
from random import Random

import numpy as np
import pytest

from training.plates import strokes
from training.plates.glyphs import CAP_HEIGHT, glyph

SIGNS = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
DIES = [strokes.die(kind, Random(seed)) for seed in range(6) for kind in ("die", "din", "wide")]


@pytest.mark.parametrize("name", DIES)
def test_every_sign_fills_its_height(name):
    for sign in SIGNS:
        ink = np.asarray(strokes.draw(name, sign, 64)) > 128
        assert ink.shape[0] == 64 and 0.05 < ink.mean() < 0.9 + (sign in "I1")
        assert ink[:4].any() and ink[-4:].any(), sign
        assert ink[:, :4].any() and ink[:, -4:].any(), sign


@pytest.mark.parametrize("name", DIES)
def test_signs_differ_but_for_o_and_0(name):
    squares = {s: np.asarray(strokes.draw(name, s, 64).resize((40, 64)), float) for s in SIGNS}
    for one, other in combinations(SIGNS, 2):
        if {one, other} not in ({"O", "0"}, {"I", "1"}):
            assert np.abs(squares[one] - squares[other]).mean() > 1.5, one + other


def test_a_name_draws_the_same_again_and_another_does_not():
    names = {strokes.die("die", Random(seed)) for seed in range(20)}
    assert len(names) > 10 and all(map(strokes.is_die, names))
    pictures = {strokes.draw(name, "G", 48).tobytes() for name in names}
    assert len(pictures) == len(names)
    assert strokes.draw(DIES[0], "R", 48).tobytes() == strokes.draw(DIES[0], "R", 48).tobytes()


def test_a_kind_without_a_die_has_that_of_europe():
    assert strokes.die("caption", Random(1)) == strokes.die("din", Random(1))


def test_dies_stand_where_fonts_stand():
    assert not strokes.is_die("/fonts/Roboto-Bold.ttf")
    assert glyph(DIES[0], "K").height == CAP_HEIGHT
