"""The measures: readings from probabilities, calibration, shares of exact texts."""

import numpy as np
import pytest

from training import alphabet
from training.reader.calibrate import calibration_error, confidences, fitted_temperature
from training.reader.evaluate import scores
from training.reader.labelled import Labelled, real
from training.reader.predict import Reading, reading
from training.scene.crop import HEIGHT, WIDTH

_NOTHING = np.zeros((1, 1, 3), np.uint8)


def _cells(line: str, sure: float = 1.0) -> np.ndarray:
    """Return probabilities of a line of cells, "_" being a gap; each cell is `sure`."""
    classes = [0 if c == "_" else alphabet.CHARACTERS.index(c) + 1 for c in line]
    table = np.zeros((len(line), alphabet.CLASSES))
    table[range(len(line)), classes] = sure
    table[:, -1] = 1 - sure
    return table


@pytest.mark.parametrize(
    "line, text",
    [("_AAB_12__", "AB12"), ("A_A", "AA"), ("AAAA", "A"), ("1_1__1", "111"), ("____", "")],
)
def test_equal_neighbours_are_one_character(line, text):
    assert reading(_cells(line), np.eye(6)[1]).text == text


def test_a_reading_is_as_sure_as_its_least_certain_character():
    cells = np.concatenate(
        [_cells("_A", 0.9), _cells("BB", 0.6), _cells("B_", 0.8), _cells("_", 0.5)]
    )
    assert reading(cells, np.eye(6)[1]) == Reading("AB", pytest.approx(0.8), "na")


def test_no_text_is_as_sure_as_the_least_certain_gap():
    assert reading(np.concatenate([_cells("__"), _cells("_", 0.7)]), np.eye(6)[0]).confidence == 0.7


def test_calibration_error_is_the_gap_between_promise_and_result():
    right = np.array([True] * 8 + [False] * 2)
    assert calibration_error(np.full(10, 0.8), right) == pytest.approx(0)
    assert calibration_error(np.full(10, 0.95), right) == pytest.approx(0.15)


def test_the_fitted_temperature_cools_a_boaster():
    rng = np.random.default_rng(1)
    logits = np.zeros((400, 2, alphabet.CLASSES))
    logits[:, 0, 5] = 12
    logits[:, 1, alphabet.GAP] = 30
    right = rng.random(400) < 0.9
    warmth = fitted_temperature(logits, right)
    before = calibration_error(confidences(logits, 1.0), right)
    after = calibration_error(confidences(logits, warmth), right)
    assert warmth > 1.1 and after < 0.05 < before


def test_strict_and_folded_shares_differ_by_o_and_zero():
    plates = [Labelled(_NOTHING, text, "us") for text in ("A0", "AB", "AI")]
    read = [Reading("AO", 0.9, "na"), Reading("AB", 0.9, "na"), Reading("AX", 0.2, "na")]
    found = scores(plates, read)
    assert found["strict"] == pytest.approx(1 / 3)
    assert found["folded"] == pytest.approx(2 / 3)


def test_real_plates_are_cut_by_their_boxes(tmp_path):
    from PIL import Image

    (tmp_path / "eu").mkdir()
    photo = Image.new("RGB", (300, 200), "black")
    photo.paste("white", (60, 80, 160, 110))
    photo.save(tmp_path / "eu" / "a.png")
    (tmp_path / "plates.csv").write_text("file,x,y,width,height,text\neu/a.png,60,80,100,30,A1\n")
    [plate] = real(tmp_path, margin=0)
    assert (plate.text, plate.subset, plate.picture.shape) == ("A1", "eu", (HEIGHT, WIDTH, 3))
    assert plate.picture[4:-4, 4:-4].min() > 240
