"""The whole chain on drawn photos: plates are found, straightened, read and judged."""

import threading
from pathlib import Path

import numpy as np
import pytest
from drawn_plates import draw_plate, photo_with
from PIL import Image
from zelvoran_anpr import zelvoran_anpr_from_image_file
from zelvoran_anpr.reading import read_plates
from zelvoran_anpr.reading.plate_box import PlateBox
from zelvoran_anpr.reading.plate_text import PlateText

EXAMPLE = Path(__file__).parents[3] / "examples" / "car.jpg"


def texts(answer: dict) -> list[str]:
    return [plate["ocr"] for plate in answer["results"]]


def test_a_drawn_plate_is_read_where_it_is(detector, ocr):
    plate = draw_plate("AB 123 CD")
    answer = read_plates(detector, ocr, photo_with((plate, 300, 400)))
    [found] = answer["results"]
    assert found["ocr"] == "AB123CD"
    assert 0.8 < found["ocr_conf"] <= 1
    assert 0.5 < found["ltrb_conf"] <= 1
    assert all(type(side) is int for side in found["ltrb"])
    left, top, right, bottom = found["ltrb"]
    assert 290 <= left < 360 and 300 + plate.width - 60 < right <= 310 + plate.width
    assert 385 <= top < 420 and 440 < bottom <= 475


@pytest.mark.parametrize("turn", [-20, 20])
def test_a_tilted_plate_is_straightened(detector, ocr, turn):
    photo = photo_with((draw_plate("KR 7492 B"), 350, 280), turn=turn)
    assert texts(read_plates(detector, ocr, photo)) == ["KR7492B"]


def test_light_lettering_on_dark_ground(detector, ocr):
    plate = draw_plate("WSX 4827", ground=(20, 20, 22), ink=(230, 230, 226))
    assert texts(read_plates(detector, ocr, photo_with((plate, 300, 300)))) == ["WSX4827"]


def test_two_plates_are_both_read(detector, ocr):
    photo = photo_with((draw_plate("HN 382 T"), 80, 120), (draw_plate("5KP 9271"), 560, 460))
    assert sorted(texts(read_plates(detector, ocr, photo))) == ["5KP9271", "HN382T"]


def test_the_rows_of_one_plate_are_joined(detector, ocr):
    plate = Image.new("RGB", (230, 150), (236, 236, 232))
    for text, top in (("MK 47", 2), ("8265", 74)):
        row = draw_plate(text, 84)
        row = row.crop((4, 6, row.width - 4, 78))
        plate.paste(row, ((230 - row.width) // 2, top))
    assert texts(read_plates(detector, ocr, photo_with((plate, 350, 250)))) == ["MK478265"]


@pytest.mark.parametrize("words", ["TOYOTA", "2024-05-12", "EXIT"])
def test_other_text_is_no_plate(detector, ocr, words):
    assert texts(read_plates(detector, ocr, photo_with((draw_plate(words), 300, 300)))) == []


@pytest.mark.parametrize("words", ["2024-05-12 12:45:07", "12:45:07", "CAM 04"])
def test_what_a_camera_writes_into_its_photos_is_no_plate(detector, ocr, words):
    stamp = draw_plate(words, 34, ground=(70, 84, 104), ink=(240, 240, 240))
    inner = stamp.crop((4, 4, stamp.width - 4, stamp.height - 4))
    assert texts(read_plates(detector, ocr, photo_with((inner, 20, 14)))) == []


def test_lettering_on_bodywork_is_no_plate(detector, ocr):
    badge = draw_plate("HB20", ground=(70, 84, 104), ink=(200, 204, 208))
    inner = badge.crop((4, 4, badge.width - 4, badge.height - 4))
    assert texts(read_plates(detector, ocr, photo_with((inner, 300, 300)))) == []


def test_a_photo_without_text_has_no_plates(detector, ocr):
    assert read_plates(detector, ocr, photo_with())["results"] == []


@pytest.mark.parametrize("shape", [(1, 1, 3), (5, 900, 3), (900, 5, 3)])
def test_tiny_and_odd_photos(detector, ocr, shape):
    assert read_plates(detector, ocr, np.zeros(shape, np.uint8))["results"] == []


def test_the_region_of_a_call_replaces_the_readers(detector, ocr):
    photo = photo_with((draw_plate("RK 101 AO"), 300, 300))
    assert read_plates(detector, ocr, photo)["region"] == "univ"
    answer = read_plates(detector, ocr, photo, region="Slovakia")
    assert (answer["region"], texts(answer)) == ("sk", ["RK101AO"])
    with pytest.raises(ValueError, match="Unknown region"):
        read_plates(detector, ocr, photo, region="atlantis")


def test_threads_share_the_objects(detector, ocr):
    photos = [photo_with((draw_plate(text), 300, 300)) for text in ("FG 381 K", "LM 572 P")]
    answers: dict[int, list[str]] = {}

    def work(i: int) -> None:
        answers[i] = texts(read_plates(detector, ocr, photos[i % 2]))

    threads = [threading.Thread(target=work, args=(i,)) for i in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert answers == {0: ["FG381K"], 1: ["LM572P"], 2: ["FG381K"], 3: ["LM572P"]}


def test_the_example_photo_is_read(detector, ocr):
    assert texts(zelvoran_anpr_from_image_file(detector, ocr, str(EXAMPLE))) == ["ZV17ANP"]
    assert EXAMPLE.stat().st_size < 300_000


@pytest.mark.parametrize(("sure", "count"), [(0.5, 0), (0.9, 1)])
def test_a_find_that_neither_network_is_sure_of_is_dropped(sure, count):
    class Unsure:
        region = "univ"

        def detect(self, _):
            return [PlateBox(np.array([[0, 0], [90, 0], [90, 30], [0, 30]], float), 0.3)]

        def read(self, *_):
            return PlateText("AB123", (sure,) * 5)

    engine, photo = Unsure(), np.zeros((40, 100, 3), np.uint8)
    assert len(read_plates(engine, engine, photo)["results"]) == count
