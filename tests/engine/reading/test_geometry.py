"""Regions of a mask, smallest rectangles, cuts, and candidates from text lines."""

import numpy as np
import pytest
from drawn_plates import draw_plate, photo_with
from zelvoran_anpr.reading import quads
from zelvoran_anpr.reading.connected_regions import find_regions
from zelvoran_anpr.reading.plate_ground import ground_edge
from zelvoran_anpr.reading.plate_shapes import plate_candidates
from zelvoran_anpr.reading.straighten import straighten
from zelvoran_anpr.reading.text_detection import TextLine


def test_regions_join_across_diagonals_and_u_shapes():
    mask = np.array([list(row) for row in ["#.#..", "#.#.#", "###..", "...#.", "....."]]) == "#"
    areas = sorted(region.area for region in find_regions(mask))
    assert areas == [1, 8]
    assert find_regions(np.zeros((3, 3), bool)) == []


def test_the_mean_of_a_region_counts_its_pixels_only():
    mask = np.zeros((4, 6), bool)
    mask[1:3, 1:4] = True
    values = np.where(mask, 0.5, 9.0)
    assert find_regions(mask)[0].mean(values) == 0.5


@pytest.mark.parametrize("angle", [-40, -10, 0, 25, 44])
def test_the_smallest_rectangle_of_a_turned_one_is_itself(angle):
    turn = np.deg2rad(angle)
    along = np.array([np.cos(turn), np.sin(turn)])
    down = np.array([-along[1], along[0]])
    rect = np.array([[0, 0], 90 * along, 90 * along + 20 * down, 20 * down]) + 100
    inner = rect.mean(axis=0) + (rect - rect.mean(axis=0)) * 0.5
    found = quads.min_area_rect(np.vstack([inner, rect]))
    assert np.allclose(found, rect, atol=1e-6)


def test_a_single_point_is_a_rectangle_without_area():
    assert quads.size(quads.min_area_rect(np.array([[3.0, 4.0]]))) == (0, 0)


def test_straighten_undoes_a_turn():
    photo = photo_with((draw_plate("X"), 300, 300))
    upright = np.array([[300, 300], [350, 300], [350, 340], [300, 340]], np.float64)
    assert (
        np.abs(straighten(photo, upright, 40, 50).astype(int) - photo[300:340, 300:350]).max() < 3
    )
    outside = straighten(photo, upright - 5000, 40, 50)
    assert outside.shape == (40, 50, 3)


def line(left, top, width, height, confidence=0.9) -> TextLine:
    right, bottom = left + width, top + height
    corners = [[left, top], [right, top], [right, bottom], [left, bottom]]
    return TextLine(np.array(corners, np.float64), confidence)


@pytest.fixture
def noise():
    return np.random.default_rng(5).integers(0, 255, (400, 600, 3), np.uint8)


def test_halves_of_a_row_and_rows_of_a_plate_are_also_offered_together(noise):
    beside = plate_candidates(noise, [line(100, 100, 60, 30), line(180, 102, 60, 30)])
    assert sorted(len(box.lines) for box in beside) == [1, 1, 1]
    assert max(quads.size(box.corners)[0] for box in beside) > 130
    stacked = plate_candidates(noise, [line(100, 100, 80, 30), line(96, 138, 90, 34)])
    [rows] = [box.lines for box in stacked if len(box.lines) == 2]
    assert [quads.bounds(row)[1] for row in rows] == [100, 138]


def test_lines_that_no_plate_has_are_dropped(noise):
    tiny, endless, tall = line(10, 10, 30, 6), line(10, 50, 500, 20), line(300, 100, 20, 90)
    assert plate_candidates(noise, [tiny, endless, tall]) == []
    assert plate_candidates(np.full((400, 600, 3), 90, np.uint8), [line(100, 100, 90, 30)]) == []


def test_the_ground_of_a_plate_ends_and_that_of_lettering_goes_on():
    plate = draw_plate("AB 123")
    quad = line(320, 308, plate.width - 40, 44).quad
    framed = photo_with((plate, 300, 300))
    bare = photo_with((plate.crop((4, 4, plate.width - 4, 56)), 304, 304), ground=(236, 236, 232))
    assert ground_edge(framed, quad) > 0.5
    assert ground_edge(bare, quad) < 0.2
