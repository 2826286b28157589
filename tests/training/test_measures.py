"""The measures: readings from probabilities, calibration, shares of exact texts."""

from typing import ClassVar

import numpy as np
import pytest
from PIL import Image
from zelvoran_anpr.reading.plate_text import PlateText

from training.reader.calibrate import calibration_error, error_at, fitted_temperature
from training.reader.evaluate import scores
from training.reader.labelled import Labelled, real

_NOTHING = np.zeros((1, 1, 3), np.uint8)


def test_calibration_error_is_the_gap_between_promise_and_result():
    right = np.array([True] * 8 + [False] * 2)
    assert calibration_error(np.full(10, 0.8), right) == pytest.approx(0)
    assert calibration_error(np.full(10, 0.95), right) == pytest.approx(0.15)


class _Boaster:
    """A reader's session that is 0.97 sure of every A and right about 7 of 10."""

    custom_metadata_map: ClassVar = {"characters": "AB", "regions": "eup"}

    def get_modelmeta(self):
        return self

    def run(self, _, inputs: dict) -> list[np.ndarray]:
        cells = np.array([[0.02, 0.97, 0.01], [0.98, 0.01, 0.01]] * 3)
        count = len(inputs["picture"])
        return [np.stack([cells] * count), np.ones((count, 1))]


def test_the_fitted_temperature_cools_a_boaster():
    corners = np.array([[0, 0], [9, 0], [9, 3], [0, 3]], float)
    texts = ["AAA"] * 7 + ["BBB"] * 3
    plates = [Labelled(np.zeros((9, 9, 3), np.uint8), corners, text, "us") for text in texts]
    temperature, error = fitted_temperature(_Boaster(), plates)
    assert temperature > 1.5
    assert error < 0.5 * error_at(_Boaster(), 1.0, plates)


def test_strict_and_folded_shares_differ_by_o_and_zero():
    plates = [Labelled(_NOTHING, np.zeros((4, 2)), text, "us") for text in ("A0", "AB", "AI")]
    read = [PlateText("AO", (0.9, 0.9)), PlateText("AB", (0.9, 0.9)), PlateText("AX", (0.2, 0.2))]
    found = scores(plates, read)
    assert found["strict"] == pytest.approx(1 / 3)
    assert found["folded"] == pytest.approx(2 / 3)


def test_real_plates_come_with_their_boxes(tmp_path):
    (tmp_path / "eu").mkdir()
    Image.new("RGB", (300, 200), "black").save(tmp_path / "eu" / "a.png")
    (tmp_path / "plates.csv").write_text("file,x,y,width,height,text\neu/a.png,60,80,100,30,A1\n")
    [plate] = real(tmp_path)
    assert (plate.text, plate.subset, plate.picture.shape) == ("A1", "eu", (200, 300, 3))
    assert plate.corners.tolist() == [[60, 80], [160, 80], [160, 110], [60, 110]]
