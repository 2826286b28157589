"""`read --output`: which files are written, what they show, what is said when they cannot be."""

import os

import pytest

Image = pytest.importorskip("PIL.Image")

GREEN = (0, 255, 0)
BLUE = (20, 40, 200)


def photo(path, size=(200, 120), **options):
    Image.new("RGB", size, BLUE).save(path, **options)
    return path


@pytest.fixture
def car(zv):
    zv.script(
        "def answer(path):\n"
        "    plate = {'ocr': 'AB 12', 'ocr_conf': 0.9, 'ltrb': [40.9, 60, 140, 90.2]}\n"
        "    return {'results': [plate]}\n"
    )
    return photo(zv.folder / "car.png")


def pixels(path):
    with Image.open(path) as image:
        return image.convert("RGB")


def test_the_copy_shows_box_and_label_and_nothing_else(zv, car):
    out = zv("car.png", "--output", "out.png").out
    assert out == (
        "Processing 1 images | 640p_fp32/fp32 | Conf: 0.5\n"
        "car.png: 1 plates: AB 12 (0.90)\n  → Saved: out.png\n"
        "\nTotal: 1 plates from 1 images\n"
    )
    copy = pixels(zv.folder / "out.png")
    for x, y in [
        (40, 60),
        (41, 61),
        (140, 90),
        (139, 89),
        (100, 60),
        (100, 61),
        (40, 75),
        (140, 75),
    ]:
        assert copy.getpixel((x, y)) == GREEN, (x, y)
    for x, y in [(39, 75), (42, 75), (138, 75), (141, 75), (100, 62), (100, 88), (100, 91)]:
        assert copy.getpixel((x, y)) == BLUE, (x, y)
    assert copy.getpixel((40, 54)) == GREEN
    assert copy.getpixel((39, 54)) == BLUE
    strip = copy.crop((40, 38, 110, 55))
    assert any(max(colour) < 60 for _, colour in strip.getcolors(10000))


def test_an_image_without_plates_is_copied_unchanged(zv, car):
    zv.script("def answer(path):\n    return {}\n")
    assert "car.png: No plates\n  → Saved: out.png\n" in zv("car.png", "--output", "out.png").out
    assert pixels(zv.folder / "out.png").getcolors() == [(200 * 120, BLUE)]


def test_a_plate_below_the_threshold_is_not_drawn(zv, car):
    zv("car.png", "--output", "out.png", "--confidence", "0.95")
    assert pixels(zv.folder / "out.png").getcolors() == [(200 * 120, BLUE)]


@pytest.mark.parametrize(
    "name, kind",
    [
        ("o.jpg", "JPEG"),
        ("o.JPEG", "JPEG"),
        ("o.bmp", "BMP"),
        ("o.tif", "TIFF"),
        ("o.tiff", "TIFF"),
        ("o.png", "PNG"),
    ],
)
def test_the_suffix_chooses_the_format(zv, car, name, kind):
    assert f"  → Saved: {name}\n" in zv("car.png", "--output", name).out
    with Image.open(zv.folder / name) as image:
        assert image.format == kind
        assert image.size == (200, 120)


def test_several_images_go_into_a_folder_under_their_names(zv, car):
    photo(zv.folder / "b.jpg")
    (zv.folder / "res").mkdir()
    out = zv("car.png", "b.jpg", "--output", "res").out
    assert "  → Saved: detected_car.png\n" in out
    assert sorted(os.listdir(zv.folder / "res")) == ["detected_b.jpg", "detected_car.png"]


def test_several_images_go_beside_a_name_with_its_suffix(zv, car):
    photo(zv.folder / "b.jpg")
    (zv.folder / "res").mkdir()
    zv("car.png", "b.jpg", "--output", "res/x.png")
    assert sorted(os.listdir(zv.folder / "res")) == ["detected_b.png", "detected_car.png"]


def test_the_same_image_twice_counts_as_several(zv, car):
    zv("car.png", "car.png", "--output", "x.png")
    assert (zv.folder / "detected_car.png").exists()
    assert not (zv.folder / "x.png").exists()


def test_several_images_and_a_folder_that_is_not_there_fail_each(zv, car):
    photo(zv.folder / "b.jpg")
    out = zv("car.png", "b.jpg", "--output", "newdir").out
    assert out.count("\nError: ") == 2
    assert "Saved" not in out
    assert out.endswith("Total: 2 plates from 2 images\n")
    assert not (zv.folder / "newdir").exists()


def test_one_image_and_a_folder_as_output_fail_after_the_plate_line(zv, car):
    (zv.folder / "res").mkdir()
    out = zv("car.png", "--output", "res", "--json", "r.json").out
    assert "car.png: 1 plates: AB 12 (0.90)\nError: " in out
    assert out.endswith("Total: 1 plates from 1 images\n")
    assert os.listdir(zv.folder / "res") == []


@pytest.mark.parametrize("content", [b"", b"no image", b"\xff\xd8\xff\xe0truncated"])
def test_an_image_that_cannot_be_decoded_fails_alone(zv, car, content):
    (zv.folder / "bad.jpg").write_bytes(content)
    (zv.folder / "res").mkdir()
    out = zv("bad.jpg", "car.png", "--output", "res").out
    assert "bad.jpg: 1 plates: AB 12 (0.90)\nError: " in out
    assert os.listdir(zv.folder / "res") == ["detected_car.png"]


def test_a_full_disk_is_told(zv, car):
    (zv.folder / "full.png").symlink_to("/dev/full")
    out = zv("car.png", "--output", "full.png").out
    assert "Error: [Errno 28] No space left on device" in out


def test_a_box_without_four_corners_fails_the_copy_only(zv, car):
    zv.script(
        "def answer(path):\n    return {'results': [{'ocr': 'A', 'ocr_conf': 1, 'ltrb': [1, 2]}]}\n"
    )
    out = zv("car.png", "--output", "out.png").out
    assert "car.png: 1 plates: A (1.00)\nError: list index out of range\n" in out
    assert not (zv.folder / "out.png").exists()


def test_a_photo_taken_sideways_is_saved_upright(zv, car):
    sideways = Image.Exif()
    sideways[0x0112] = 6  # turn right by 90 degrees to see it upright
    photo(zv.folder / "side.jpg", size=(120, 200), exif=sideways)
    zv("side.jpg", "--output", "out.png")
    assert pixels(zv.folder / "out.png").size == (200, 120)
    assert pixels(zv.folder / "out.png").getpixel((140, 90)) == GREEN


def test_the_engine_and_the_copy_see_a_photo_the_same_way_up(zv, car):
    zv("car.png", "--output", "car.png")
    assert pixels(car).getpixel((40, 60)) == GREEN, "an image may be its own output"


def test_a_cut_off_photo_is_annotated_as_far_as_it_goes(zv, car):
    Image.effect_noise((200, 120), 90).convert("RGB").save(zv.folder / "cut.jpg")
    data = (zv.folder / "cut.jpg").read_bytes()
    (zv.folder / "cut.jpg").write_bytes(data[: len(data) * 3 // 4])
    _, out, err = zv("cut.jpg", "--output", "out.png")
    assert "  → Saved: out.png\n" in out
    assert err == (
        f"zv-anpr: {zv.folder / 'cut.jpg'}: image file is truncated; "
        "the annotated copy shows what could be read\n"
    )
    assert pixels(zv.folder / "out.png").getpixel((40, 60)) == GREEN


def test_photos_of_one_name_share_an_annotated_copy_and_the_user_is_told(zv, car):
    for folder in ["a", "b", "res"]:
        (zv.folder / folder).mkdir()
    first, second = photo(zv.folder / "a" / "car.png"), photo(zv.folder / "b" / "car.png")
    _, out, err = zv("a", "b", "--output", "res")
    assert out.count("  → Saved: detected_car.png\n") == 2
    assert err == (
        f"zv-anpr: res/detected_car.png held the annotated copy of {first}"
        f" and now holds the annotated copy of {second}\n"
    )


def test_a_photo_that_is_written_over_is_told(zv, car):
    assert zv("car.png", "--output", "./car.png").err == (
        f"zv-anpr: ./car.png held the photo and now holds the annotated copy of {car}\n"
    )
    assert zv("car.png", "--json", "car.png").err == (
        f"zv-anpr: {car} held the photo and now holds the JSON results\n"
    )


def test_a_file_that_was_there_before_is_written_over_in_silence(zv, car):
    photo(zv.folder / "out.png")
    assert zv("car.png", "--output", "out.png").err == ""
