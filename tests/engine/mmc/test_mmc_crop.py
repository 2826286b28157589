"""vehicle_crop: the surroundings of the plate, never outside the photo."""

import io

import numpy as np
import pytest
from PIL import Image
from zelvoran_anpr.mmc import vehicle_crop
from zelvoran_anpr.mmc.serve.crop import jpeg_of


def numbered(height: int, width: int) -> np.ndarray:
    """A photo whose pixels tell their own row and column."""
    photo = np.zeros((height, width, 3), dtype=np.uint16)
    photo[..., 0], photo[..., 1] = np.indices((height, width))
    return photo


def corners(crop: np.ndarray) -> tuple[int, int, int, int]:
    """left, top, right, bottom of the crop within the numbered photo."""
    return int(crop[0, 0, 1]), int(crop[0, 0, 0]), int(crop[-1, -1, 1]), int(crop[-1, -1, 0])


def test_a_plate_in_the_middle_shows_the_car_above_and_beside_it():
    crop = vehicle_crop(numbered(2000, 3000), [1400, 1180, 1600, 1220])
    assert corners(crop) == (860, 480, 2139, 1479)


def test_at_the_edge_it_ends_with_the_photo():
    crop = vehicle_crop(numbered(500, 800), [-20, 440, 180, 490])
    assert corners(crop) == (0, 0, 719, 499)


def test_a_tiny_plate_still_gives_a_picture():
    crop = vehicle_crop(numbered(1000, 1000), [500, 500, 510, 503])
    assert crop.shape[:2] >= (160, 160)


@pytest.mark.parametrize(
    "box",
    [
        [5, 5, 5, 9], [9, 9, 1, 1], [0, 0, float("nan"), 9], [1, 2, 3], None,
        ["a", 1, 2, 3], [0, 0, float("inf"), 9], [9000, 9000, 9100, 9030],
    ],
)  # fmt: skip
def test_a_box_without_sense_gives_the_whole_photo(box):
    photo = numbered(50, 60)
    assert vehicle_crop(photo, box) is photo


def test_numbers_of_numpy_are_boxes_too():
    box = np.array([20, 20, 30, 24], dtype=np.float32)
    assert vehicle_crop(numbered(500, 500), box).size > 0


def test_the_jpeg_keeps_its_shape_and_colors():
    photo = np.full((300, 900, 3), (10, 200, 30), dtype=np.uint8)
    picture = Image.open(io.BytesIO(jpeg_of(photo[:, ::-1], 450)))
    assert picture.size == (450, 150)
    assert all(abs(a - b) < 6 for a, b in zip(picture.getpixel((9, 9)), (10, 200, 30), strict=True))


@pytest.mark.parametrize("shape", [(10, 10), (0, 10, 3), (10, 10, 4)])
def test_what_is_no_photo_is_refused(shape):
    with pytest.raises(ValueError, match="not an RGB photo"):
        jpeg_of(np.zeros(shape, dtype=np.uint8), 100)
