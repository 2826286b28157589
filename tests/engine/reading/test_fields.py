"""The detector's inputs: whole photos scaled and filled up, parts enlarged and filled up."""

import numpy as np
import pytest
from zelvoran_anpr.reading import fields


def test_a_photo_is_scaled_and_filled_up_to_multiples_of_32():
    field = fields.whole(np.full((720, 1280, 3), 255, np.uint8), 640)
    assert field.pixels.shape == (384, 640, 3) and field.pixels.dtype == np.uint8
    assert field.scale == 0.5
    assert (field.pixels[:360] == 255).all() and (field.pixels[360:] == 114).all()


def test_small_and_upright_photos_fit_too():
    field = fields.whole(np.zeros((40, 10, 3), np.uint8), 320)
    assert field.pixels.shape == (320, 96, 3) and field.scale == 8


@pytest.mark.parametrize("bounds", [(100, 60, 140, 72), (0, 0, 30, 10), (370, 190, 400, 200)])
def test_a_part_shows_the_plate_where_it_says(bounds):
    left, top, right, bottom = bounds
    photo = np.zeros((200, 400, 3), np.uint8)
    photo[top:bottom, left:right] = (255, 0, 0)
    field = fields.part(photo, bounds)
    assert field.pixels.shape == (160, 256, 3)
    red = np.argwhere(field.pixels[..., 0].astype(int) - field.pixels[..., 1] > 128)
    first, last = field.on_photo(red[:, ::-1]).min(0), field.on_photo(red[:, ::-1] + 1).max(0)
    assert first == pytest.approx([left, top], abs=0.6)
    assert last == pytest.approx([right, bottom], abs=0.6)


def test_what_is_beside_the_photo_is_grey():
    field = fields.part(np.full((100, 300, 3), 255, np.uint8), (0, 0, 60, 20))
    assert (field.pixels[0] == 114).all() and (field.pixels[:, 0] == 114).all()
    assert (field.pixels[-20:, -20:] == 255).all()
