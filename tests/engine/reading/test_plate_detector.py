"""The plate detector: overlapping finds, the overview, closer looks."""

import numpy as np
import pytest
from zelvoran_anpr.reading import plate_detector
from zelvoran_anpr.reading.plate_box import PlateBox


def _quad(left, top, right, bottom):
    return [[left, top], [right, top], [right, bottom], [left, bottom]]


def test_overlapping_finds_leave_the_surest_and_weak_ones_go():
    boxes = np.array(
        [[0, 0, 100, 20], [2, 0, 102, 20], [300, 0, 400, 20], [0, 300, 90, 330]], float
    )
    corners = np.array([_quad(*box) for box in boxes], np.float32)
    found = plate_detector.plates(np.array([0.6, 0.9, 0.5, 0.1]), boxes, corners, 0.3)
    assert [plate.confidence for plate in found] == [0.9, 0.5]
    assert found[1].corners.tolist() == _quad(300, 0, 400, 20)


def test_finds_of_one_place_tell_its_corners_together():
    boxes = np.array([[0, 0, 100, 20], [4, 0, 104, 20], [80, 0, 180, 20]], float)
    corners = np.array([_quad(*box) for box in boxes], np.float32)
    [found] = plate_detector.plates(np.array([0.9, 0.3, 0.2]), boxes, corners, 0.3)
    assert found.corners == pytest.approx(np.array(_quad(1, 0, 101, 20)))


def test_no_finds_give_no_plates():
    assert plate_detector.plates(np.zeros(5), np.zeros((5, 4)), np.zeros((5, 4, 2)), 0.3) == []


class _Session:
    """Sees one quad in each look, as scripted: (score, bounds); keeps the inputs' shapes."""

    def __init__(self, *looks: tuple[float, tuple]):
        self.looks, self.asked = list(looks), []

    def run(self, _, inputs: dict) -> list[np.ndarray]:
        self.asked.append(inputs["picture"].shape)
        found = [self.looks.pop(0) for _ in inputs["picture"]]
        boxes = np.array([[bounds] for _, bounds in found], np.float32)
        quads = np.array([[np.ravel(_quad(*bounds))] for _, bounds in found], np.float32)
        return [np.array([[score] for score, _ in found]), boxes, quads]


def _found(session: _Session) -> list[PlateBox]:
    detector = plate_detector.PlateDetector(session, 640)
    return detector.detect(np.zeros((720, 1280, 3), np.uint8))


def _lefts(session: _Session) -> list[int]:
    return [round(float(box.corners[0][0])) for box in _found(session)]


_NOTHING = (0.0, (0, 0, 5, 5))


def test_an_overview_finds_the_plate_that_fills_the_photo():
    session = _Session((0.8, (20, 30, 200, 80)), (0.7, (100, 120, 300, 200)))
    assert _lefts(session) == [round(20 * 1280 / 224)]
    assert session.asked == [(1, 128, 224, 3), (1, 384, 640, 3)]


def test_what_is_much_surer_than_the_overview_stands_for_itself():
    assert _lefts(_Session((0.4, (20, 30, 200, 80)), (0.9, (100, 120, 300, 200)))) == [200, 114]


def test_the_overview_tells_nothing_of_small_plates():
    assert _lefts(_Session((0.9, (20, 30, 60, 40)), _NOTHING)) == []


# A find 60 pixels wide in the middle of the input: 120 x 40 on the photo, centred in its part.
_SMALL = (290, 170, 350, 190)
_CLOSER = (73, 63, 183, 99)  # the same in the enlarged part, 110 pixels wide


def test_a_closer_look_tells_the_corners_of_small_plates():
    session = _Session(_NOTHING, (0.5, _SMALL), (0.8, _CLOSER))
    [box] = _found(session)
    assert session.asked[2] == (1, 160, 256, 3)
    assert box.confidence == 0.8
    assert box.corners[0] == pytest.approx([580, 340], abs=2)
    assert np.ptp(box.corners[:, 0]) == pytest.approx(120, abs=1)


@pytest.mark.parametrize(
    ("hint", "closer", "found"),
    [(0.2, 0.6, [0.6]), (0.2, 0.4, []), (0.35, 0.4, [0.4]), (0.4, 0.0, []), (0.6, 0.0, [0.6]),
     (0.1, 0.9, [])],
)  # fmt: skip
def test_a_small_find_needs_a_closer_look_unless_it_is_sure(hint, closer, found):
    looks = (_NOTHING, (hint, _SMALL), (closer, _CLOSER))
    assert [box.confidence for box in _found(_Session(*looks))] == found


def test_a_closer_look_at_something_else_confirms_nothing():
    assert _found(_Session(_NOTHING, (0.4, _SMALL), (0.9, (0, 0, 40, 12)))) == []
