"""Photos that are read before they are asked for: order, changes, failures, the end."""

import logging
import os
import threading
import time

import pytest
from zelvoran_anpr import (
    zelvoran_anpr_expect_image_files,
    zelvoran_anpr_from_image_file,
    zv_anpr_detector_v17,
)
from zelvoran_anpr.reading import ReadError
from zelvoran_anpr.reading.photos_ahead import PhotosAhead


@pytest.fixture
def photos(tmp_path):
    paths = [str(tmp_path / f"{i}.jpg") for i in range(12)]
    for path in paths:
        with open(path, "w") as file:
            file.write(path)
    return paths


class _Reading:
    """Answers with a file's content; counts what was begun."""

    def __init__(self):
        self.begun, self.hold, self.lock = [], threading.Event(), threading.Lock()
        self.hold.set()

    def __call__(self, path, admit):
        with self.lock:
            self.begun.append(path)
        self.hold.wait(20)
        with open(path) as file:
            return {"results": [file.read()], "region": "univ"}


def _until(holds):
    end = time.monotonic() + 20
    while not holds():
        assert time.monotonic() < end
        time.sleep(0.01)


def test_answers_are_those_of_the_photos_asked_for_and_only_a_few_are_begun(photos):
    reading = _Reading()
    ahead = PhotosAhead(reading, photos, 2)
    _until(lambda: len(reading.begun) == 4)
    for i, path in enumerate(photos):
        answer = ahead.result(path) or reading(path, None)
        assert answer["results"] == [path]
        assert len(reading.begun) <= i + 1 + 4
    ahead.stop()
    assert sorted(reading.begun) == sorted(photos)


def test_nothing_more_is_begun_when_nobody_asks_any_more(photos):
    reading = _Reading()
    ahead = PhotosAhead(reading, photos, 2)
    _until(lambda: len(reading.begun) == 4)
    ahead.stop()
    assert len(reading.begun) == 4
    assert ahead.result(photos[8]) is None


def test_photos_left_out_and_photos_nobody_was_told_of(photos):
    reading = _Reading()
    ahead = PhotosAhead(reading, photos[:4], 2)
    _until(lambda: len(reading.begun) == 4)
    assert ahead.result(photos[5]) is None
    assert ahead.result(photos[2])["results"] == [photos[2]]
    assert ahead.result(photos[0]) is None
    assert ahead.result(photos[3])["results"] == [photos[3]]
    ahead.stop()


def test_a_photo_named_twice_is_answered_twice(photos):
    ahead = PhotosAhead(_Reading(), [photos[0], photos[0]], 1)
    for _ in range(2):
        _until(lambda: ahead._begun or not ahead._waiting)
        assert ahead.result(photos[0])["results"] == [photos[0]]
    ahead.stop()


@pytest.mark.parametrize("change", ["written anew", "replaced", "gone"])
def test_a_file_that_changed_meanwhile_is_not_answered_from_before(photos, change):
    ahead = PhotosAhead(_Reading(), photos[:2], 1)
    _until(ahead._waiting[0].done.is_set)
    if change == "written anew":
        with open(photos[0], "a") as file:
            file.write("more")
    elif change == "replaced":
        os.replace(photos[5], photos[0])
    else:
        os.unlink(photos[0])
    assert ahead.result(photos[0]) is None
    assert ahead.result(photos[1])["results"] == [photos[1]]
    ahead.stop()


def test_a_file_that_changes_while_it_is_read_is_not_answered(photos):
    reading = _Reading()
    reading.hold.clear()
    ahead = PhotosAhead(reading, photos[:1], 1)
    _until(lambda: reading.begun)
    with open(photos[0], "a") as file:
        file.write("more")
    reading.hold.set()
    assert ahead.result(photos[0]) is None
    ahead.stop()


@pytest.mark.skipif(not hasattr(os, "mkfifo"), reason="named pipes are POSIX")
def test_pipes_and_failures_are_left_for_the_asking(photos, tmp_path):
    os.mkfifo(tmp_path / "pipe.jpg")
    names = [str(tmp_path / "pipe.jpg"), str(tmp_path / "none.jpg"), "a\0b.jpg", photos[0]]
    reading = _Reading()
    ahead = PhotosAhead(reading, names, 1)
    assert [ahead.result(name) for name in names[:3]] == [None] * 3
    _until(lambda: not ahead._waiting or ahead._waiting[0].done.is_set())
    assert ahead.result(photos[0])["results"] == [photos[0]]
    assert reading.begun == [photos[0]]
    ahead.stop()


def test_large_photos_take_turns(photos):
    inside, most = [], []

    def read(path, admit):
        admit(1_000_000)
        admit(50_000_000)
        admit(50_000_000)
        inside.append(path)
        most.append(len(inside))
        time.sleep(0.02)
        inside.remove(path)
        return {"results": [], "region": "univ"}

    ahead = PhotosAhead(read, photos, 4)
    for path in photos:
        ahead.result(path)
    ahead.stop()
    assert set(most) == {1}


@pytest.fixture
def real_photos(tmp_path):
    """The example photo, no photo at all, and the example cut off in the middle."""
    from pathlib import Path

    data = (Path(__file__).parents[3] / "examples" / "car.jpg").read_bytes()
    contents = [data, b"no photo", data[: len(data) * 3 // 4], data]
    paths = [tmp_path / f"{i}.jpg" for i in range(4)]
    for path, content in zip(paths, contents, strict=True):
        path.write_bytes(content)
    return [str(path) for path in paths]


def _read_all(detector, ocr, paths, caplog) -> list:
    seen = []
    for path in paths:
        caplog.clear()
        try:
            seen.append(zelvoran_anpr_from_image_file(detector, ocr, path))
        except ReadError as error:
            seen.append(str(error))
        seen.append([record.getMessage() for record in caplog.records])
    return seen


def test_answers_errors_and_words_in_the_log_are_the_same_as_without(ocr, real_photos, caplog):
    caplog.set_level(logging.WARNING)
    detector = zv_anpr_detector_v17("320p_fp32")
    before = _read_all(detector, ocr, real_photos, caplog)
    zelvoran_anpr_expect_image_files(detector, ocr, real_photos)
    time.sleep(0.5)
    assert _read_all(detector, ocr, real_photos, caplog) == before
    assert "Not a JPEG" in before[2] and "cut off" in before[5][0]
