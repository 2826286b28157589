"""Every kind of photo file becomes the same upright RGB array; bad files give one line."""

import io
import os

import numpy as np
import pytest
from PIL import Image
from zelvoran_anpr.reading import PhotoTooLarge, ReadError, image_loading, load_image


@pytest.fixture
def colours():
    """40 x 24 with a red left half, a blue right half and a green top left corner."""
    array = np.zeros((24, 40, 3), np.uint8)
    array[:, :20], array[:, 20:], array[:8, :8] = (200, 20, 20), (20, 20, 200), (20, 200, 20)
    return array


def encoded(image: Image.Image, kind: str, **options) -> bytes:
    stream = io.BytesIO()
    image.save(stream, kind, **options)
    return stream.getvalue()


@pytest.mark.parametrize("kind", ["PNG", "BMP", "TIFF", "JPEG"])
def test_formats(colours, kind, tmp_path):
    path = tmp_path / f"a photo.{kind.lower()}"
    options = {"quality": 95, "subsampling": 0} if kind == "JPEG" else {}
    path.write_bytes(encoded(Image.fromarray(colours), kind, **options))
    loaded = load_image(path)
    assert (loaded.shape, loaded.dtype) == ((24, 40, 3), np.uint8)
    assert np.abs(loaded[12:, 2:16].astype(int) - colours[12:, 2:16]).max() < 12
    assert np.array_equal(load_image(path.read_bytes()), loaded)


@pytest.mark.parametrize("mode", ["L", "P", "RGBA", "LA", "CMYK", "1"])
def test_colour_modes(colours, mode):
    image = Image.fromarray(colours).convert(mode)
    kind = "TIFF" if mode == "CMYK" else "PNG"
    loaded = load_image(encoded(image, kind))
    assert loaded.shape == (24, 40, 3)
    assert np.abs(loaded.astype(int) - np.asarray(image.convert("RGB"))).max() <= 1


def test_16_bit_grey_is_divided_by_257():
    values = np.array([[0, 256, 257, 25700, 65535]], np.uint16)
    for kind in ("PNG", "TIFF"):
        loaded = load_image(encoded(Image.fromarray(values), kind))
        assert loaded[0, :, 0].tolist() == [0, 0, 1, 100, 255]
        assert (loaded[..., 0] == loaded[..., 2]).all()


@pytest.mark.parametrize(
    ("orientation", "green_at"),
    [(1, (2, 2)), (2, (2, 37)), (3, (21, 37)), (4, (21, 2)),
     (5, (2, 2)), (6, (2, 21)), (7, (37, 21)), (8, (37, 2))],
)  # fmt: skip
def test_exif_turns_the_photo_upright(colours, orientation, green_at):
    exif = Image.Exif()
    exif[0x0112] = orientation
    loaded = load_image(encoded(Image.fromarray(colours), "JPEG", exif=exif, quality=95))
    assert loaded.shape[:2] == ((24, 40) if orientation < 5 else (40, 24))
    assert loaded[green_at][1] > 120


@pytest.mark.filterwarnings("ignore:Corrupt EXIF")
def test_broken_exif_does_not_matter(colours):
    content = encoded(Image.fromarray(colours), "JPEG", exif=b"Exif\x00\x00II*\x00\xff\xff\xff\xff")
    assert load_image(content).shape == (24, 40, 3)


def refusal(source) -> str:
    with pytest.raises(ReadError) as caught:
        load_image(source)
    text = str(caught.value)
    text.encode("utf-8")
    assert "\n" not in text
    return text


def test_missing_folder_and_empty(tmp_path):
    (tmp_path / "empty.jpg").touch()
    assert refusal(tmp_path / "none.jpg").startswith("No such file: ")
    assert refusal(tmp_path).startswith("This is a folder")
    assert refusal(tmp_path / "empty.jpg").startswith("The file is empty: ")
    assert refusal(b"") == "The file is empty: the photo"


@pytest.mark.skipif(os.name == "nt", reason="file names are text on Windows")
def test_names_of_any_bytes_stay_one_printable_line(tmp_path):
    assert "\\udcff" in refusal(os.fsdecode(bytes(tmp_path) + b"/\xff.jpg"))
    assert "\\n" in refusal(tmp_path / "two\nlines.jpg")


def test_other_files_are_no_photos(colours, tmp_path):
    note = tmp_path / "note.jpg"
    note.write_text("no photo")
    assert refusal(note) == f"Not a JPEG, PNG, BMP or TIFF photo: {note}"
    assert refusal(encoded(Image.fromarray(colours), "GIF")).startswith("Not a JPEG")


@pytest.mark.parametrize("kind", ["PNG", "JPEG", "TIFF", "BMP"])
def test_truncated(kind):
    noise = np.random.default_rng(1).integers(0, 255, (200, 300, 3), np.uint8)
    content = encoded(Image.fromarray(noise), kind)
    assert "damaged" in refusal(content[: len(content) // (8 if kind == "JPEG" else 2)])


@pytest.mark.parametrize("options", [{}, {"progressive": True}])
def test_a_jpeg_that_is_cut_off_is_read_as_far_as_it_goes(options, caplog, tmp_path):
    noise = np.random.default_rng(1).integers(0, 255, (200, 300, 3), np.uint8)
    noise[:60] = (200, 30, 30)
    content = encoded(Image.fromarray(noise), "JPEG", **options)
    path = tmp_path / "cut.jpg"
    path.write_bytes(content[: 3 * len(content) // 4])
    loaded = load_image(path)
    assert loaded.shape == (200, 300, 3)
    assert np.abs(loaded[:48].astype(int) - (200, 30, 30)).max() < 12
    (record,) = caplog.records
    assert record.getMessage().startswith("The photo is cut off, ")
    assert record.getMessage().endswith(f" % of it was read: {path}")


def test_too_many_pixels_are_refused_before_they_are_decoded(monkeypatch, colours):
    content = encoded(Image.fromarray(colours), "PNG")
    with pytest.raises(PhotoTooLarge, match="more than 0.000959 megapixels, make it smaller"):
        load_image(content, max_pixels=24 * 40 - 1)
    assert load_image(content, max_pixels=24 * 40).shape == (24, 40, 3)
    monkeypatch.setattr(image_loading, "MAX_PIXELS", 24 * 40 - 1)
    assert "make it smaller" in refusal(content)


def test_the_image_librarys_own_limit_does_not_count(monkeypatch, colours):
    monkeypatch.setattr(Image, "MAX_IMAGE_PIXELS", 10)
    assert load_image(encoded(Image.fromarray(colours), "PNG")).shape == (24, 40, 3)


def test_a_decompression_bomb_is_refused():
    header = bytearray(encoded(Image.new("L", (1, 1)), "BMP"))
    header[18:26] = (60000).to_bytes(4, "little") * 2
    assert "megapixels" in refusal(bytes(header))
