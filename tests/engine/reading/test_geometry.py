"""Cutting a four-cornered box out of a photo."""

import numpy as np
import pytest
from drawn_plates import draw_plate, photo_with
from zelvoran_anpr.reading import quads
from zelvoran_anpr.reading.straighten import straighten


def test_straighten_cuts_out_what_lies_inside():
    photo = photo_with((draw_plate("X"), 300, 300))
    upright = np.array([[300, 300], [350, 300], [350, 340], [300, 340]], np.float64)
    assert (
        np.abs(straighten(photo, upright, 40, 50).astype(int) - photo[300:340, 300:350]).max() < 3
    )
    outside = straighten(photo, upright - 5000, 40, 50)
    assert outside.shape == (40, 50, 3)


@pytest.mark.parametrize("angle", [-40, 0, 25])
def test_a_quad_grows_along_its_own_sides(angle):
    turn = np.deg2rad(angle)
    along = np.array([np.cos(turn), np.sin(turn)])
    down = np.array([-along[1], along[0]])
    quad = np.array([[0, 0], 90 * along, 90 * along + 20 * down, 20 * down])
    grown = quads.grow(quad, 5, 2, 5, 2)
    assert quads.size(quad) == pytest.approx((90, 20))
    assert quads.size(grown) == pytest.approx((100, 24))
    assert np.allclose(grown.mean(axis=0), quad.mean(axis=0))
