"""Large photos are unpacked only as finely as is needed, and look the same however they are."""

import io

import numpy as np
import pytest
from PIL import Image
from zelvoran_anpr.reading import ReadError, image_loading, plate_detector
from zelvoran_anpr.reading.photo import Photo

SIDES = (1600, 1200)


@pytest.fixture(scope="module")
def picture():
    """Smooth colours with a white plate of 160 x 48 pixels at (800, 400)."""
    down, across = np.mgrid[: SIDES[1], : SIDES[0]]
    colours = np.stack([across * 150 // SIDES[0], down * 150 // SIDES[1], 0 * down], axis=2)
    colours[400:448, 800:960] = 255
    return Image.fromarray(colours.astype(np.uint8))


def _jpeg(picture: Image.Image, orientation: int = 1) -> bytes:
    exif = Image.Exif()
    exif[0x0112] = orientation
    stream = io.BytesIO()
    picture.save(stream, "JPEG", quality=95, exif=exif)
    return stream.getvalue()


def test_a_large_jpeg_is_unpacked_coarsely_first_and_finely_when_asked(picture):
    photo = image_loading.open_photo(_jpeg(picture), 400)
    assert photo.shape == (1200, 1600, 3) and photo.scale == 0.25
    photo.sharpen(0.3)
    assert photo.scale == 0.5
    photo.sharpen(5)
    assert photo.scale == 1
    photo.sharpen(0.1)
    assert photo.scale == 1


@pytest.mark.parametrize("kind", ["PNG", "TIFF", "BMP"])
def test_other_photos_and_small_ones_are_unpacked_in_full(picture, kind):
    stream = io.BytesIO()
    picture.save(stream, kind)
    assert image_loading.open_photo(stream.getvalue(), 400).scale == 1
    assert image_loading.open_photo(_jpeg(picture), 900).scale == 1


@pytest.mark.parametrize("orientation", range(1, 9))
def test_a_cut_shows_the_same_however_the_photo_lies_and_is_unpacked(picture, orientation):
    data = _jpeg(picture, orientation)
    whole = image_loading.load_image(data)
    photo = image_loading.open_photo(data, 400)
    assert photo.shape == whole.shape
    coarse = np.asarray(photo.cut((600, 300, 1000, 500)).picture.resize((400, 200)))
    assert np.abs(coarse.astype(int) - whole[300:500, 600:1000]).mean() < 4
    photo.sharpen(1)
    fine = np.asarray(photo.cut((600, 300, 1000, 500)).picture)
    assert np.array_equal(fine, whole[300:500, 600:1000])


def test_a_cut_tells_where_it_begins_and_is_none_beside_the_photo():
    photo = Photo(np.zeros((50, 100, 3), np.uint8), (400, 200))
    cut = photo.cut((42, 18, 80, 60), 1)
    assert (cut.origin, cut.scale, cut.picture.size) == ((36, 12), 0.25, (12, 13))
    assert photo.cut((500, 10, 600, 30)) is None


def test_a_large_jpeg_that_is_cut_off_is_read_as_far_as_it_goes(picture):
    data = _jpeg(picture)
    photo = image_loading.open_photo(data[: len(data) * 2 // 3], 400)
    assert photo.shape == (1200, 1600, 3)
    with pytest.raises(ReadError, match="damaged or cut off"):
        image_loading.open_photo(data[: len(data) // 20], 400)


class _Session:
    """Sees a quad of so many input pixels in each whole photo, sure to 0.2, and one in each part.

    `part` is what closer looks see: how sure, and the quad's share of the part's width.
    """

    def __init__(self, wide: float, part: float):
        self.wide, self.part = wide, part

    def run(self, _, inputs: dict) -> list[np.ndarray]:
        count, height, width = inputs["picture"].shape[:3]
        is_part = (height, width) == (160, 256)
        sure, side = (self.part, 110.0) if is_part else (0.2, self.wide)
        left, top = (width - side) / 2, (height - side / 4) / 2
        quad = [left, top, left + side, top, left + side, top + side / 4, left, top + side / 4]
        boxes = [[left, top, left + side, top + side / 4]]
        return [np.array([each] * count, np.float32) for each in ([sure], boxes, [quad])]


@pytest.mark.parametrize(
    ("wide", "part", "scale"), [(20, 0.1, 0.25), (20, 0.25, 1), (60, 0.9, 1), (89, 0.9, 0.5)]
)
def test_only_plates_that_are_small_are_worth_the_full_picture(picture, wide, part, scale):
    photo = image_loading.open_photo(_jpeg(picture), 400)
    plate_detector.PlateDetector(_Session(wide, part), 640).detect(photo)
    assert photo.scale == scale
