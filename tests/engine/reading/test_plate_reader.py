"""The plate reader: the plate's picture, cells to text, votes."""

import numpy as np
import pytest
from zelvoran_anpr.reading import plate_reader, voting
from zelvoran_anpr.reading.plate_box import PlateBox
from zelvoran_anpr.reading.plate_text import PlateText


def _quad(left, top, right, bottom):
    return [[left, top], [right, top], [right, bottom], [left, bottom]]


def test_the_reader_is_shown_a_little_around_the_plate():
    line = plate_reader.with_margin(np.array(_quad(2, 0, 102, 20), float), 0.02, 0.035)
    assert line[0] == pytest.approx([0, -0.7]) and line[2] == pytest.approx([104, 20.7])


@pytest.mark.parametrize("scale", [0.3, 1.0, 3.5])
def test_a_plate_of_any_size_fills_the_picture(scale):
    width, height = round(192 * scale), round(64 * scale)
    image = np.zeros((height + 20, width + 20, 3), np.uint8)
    image[10 : 10 + height, 10 : 10 + width] = (0, 255, 0)
    quad = np.array(_quad(10, 10, 10 + width, 10 + height), float)
    picture = plate_reader.plate_picture(image, quad)
    assert picture.shape == (64, 192, 3) and picture.dtype == np.uint8
    assert (picture[4:-4, 4:-4] == (0, 255, 0)).all()


def test_a_large_plate_is_averaged_not_sampled():
    stripes = np.zeros((256, 768, 3), np.uint8)
    stripes[:, ::2] = 200
    picture = plate_reader.plate_picture(stripes, np.array(_quad(0, 0, 768, 256), float))
    inner = picture[8:-8, 8:-8].astype(int)
    assert abs(inner - 100).max() < 30


def _cells(line: str, sure: dict[int, float]) -> np.ndarray:
    """Return probabilities of a line of cells, "_" being a gap; `sure` of each, 1 unless told."""
    cells = np.zeros((len(line), 5))
    for i, sign in enumerate(line):
        best = "_AB12".index(sign)
        cells[i, best] = sure.get(i, 1.0)
        cells[i, (best + 1) % 5] = 1 - sure.get(i, 1.0)
    return cells


@pytest.mark.parametrize(
    ("line", "text"),
    [("_AA__1_BB", "A1B"), ("A_A", "AA"), ("A1", "A1"), ("11_11", "11"), ("__", "")],
)
def test_equal_neighbours_become_one_character(line, text):
    assert voting.text_of(_cells(line, {}), "AB12").text == text


def test_a_character_is_as_sure_as_its_surest_cell():
    text = voting.text_of(_cells("AA_11", {0: 0.6, 1: 0.9, 2: 0.7, 3: 0.8, 4: 0.7}), "AB12")
    assert (text.text, text.confidences, text.confidence) == ("A1", (0.9, 0.8), 0.8)


def test_the_first_half_of_the_cells_is_the_upper_row():
    assert voting.text_of(_cells("A1_B_2__", {}), "AB12").rows == (0, 0, 0, 1)


def test_no_text_has_no_confidence():
    text = voting.text_of(_cells("____", {}), "AB12")
    assert (text.text, text.confidences, text.confidence) == ("", (), 0.0)


def _text(text: str, sure: float) -> PlateText:
    return PlateText(text, (sure,) * len(text))


def test_the_heavier_reading_is_elected_and_what_is_not_confirmed_is_less_sure():
    agreed = voting.elected([_text("AB1", 0.9), _text("AB7", 0.95), _text("AB1", 0.6)])
    assert agreed.text == "AB1"
    assert agreed.confidences == pytest.approx([0.75 * (2 / 3) ** 0.5] * 3)
    assert voting.elected([_text("AB1", 0.9)] * 3).confidence == pytest.approx(0.9)


def test_one_faint_reading_does_not_outvote_two_looks_that_see_nothing():
    assert voting.elected([_text("", 0), _text("ABC", 0.7), _text("", 0)]) == _text("", 0)


def test_what_one_look_reads_is_not_outvoted_by_nothing():
    voted = voting.elected([_text("GWAGEN", 0.95), *[_text("", 0)] * 4])
    assert voted.text == "GWAGEN"
    assert voted.confidence == pytest.approx(0.95 * 0.2**0.5)
    assert [text for text, _ in voted.candidates] == ["GWAGEN", ""]
    assert sum(share for _, share in voted.candidates) == pytest.approx(1)


class _Looks:
    """Stands for the reader's session: gives the same cells for every look and counts looks."""

    def __init__(self, characters: str, cells: np.ndarray):
        self.cells, self.asked = cells, []
        self.custom_metadata_map = {"characters": characters, "regions": "eup,na"}

    def get_modelmeta(self):
        return self

    def run(self, _, pictures: dict) -> list[np.ndarray]:
        self.asked.append(len(pictures["picture"]))
        return [np.stack([self.cells] * self.asked[-1]), np.array([[0.8, 0.2]] * self.asked[-1])]


def _reader(characters: str, cells: np.ndarray) -> tuple[plate_reader.PlateReader, _Looks]:
    session = _Looks(characters, cells)
    return plate_reader.PlateReader(session), session


@pytest.mark.parametrize(
    ("line", "sure", "found", "asked"),
    [("A1B", 0.99, 0.4, [1]), ("A1B", 0.9, 0.4, [1, 4]), ("A1_", 0.9, 0.9, [1]),
     ("___", 1, 0.9, [1])],
)  # fmt: skip
def test_more_looks_are_taken_where_the_first_leaves_doubt(line, sure, found, asked):
    reader, session = _reader("AB12", _cells(line, {0: sure}))
    photo = np.zeros((50, 120, 3), np.uint8)
    box = PlateBox(np.array(_quad(5, 5, 105, 35), float), found)
    assert reader.read(photo, box, "univ").text == line.strip("_")
    assert session.asked == asked


def test_a_text_that_mixes_scripts_as_no_country_does_is_read_as_latin():
    cells = np.array([[0, 0, 0, 0.97, 0.03], [0, 0.02, 0, 0, 0.98], [0, 0, 0.99, 0, 0]])
    reader, _ = _reader("AB1京", cells)
    box = PlateBox(np.array(_quad(5, 5, 105, 35), float), 0.9)
    assert reader.read(np.zeros((50, 120, 3), np.uint8), box, "univ").text == "1AB"


def test_a_reading_tells_which_groups_the_plate_looks_like():
    reader, _ = _reader("AB12", _cells("A1B", {}))
    box = PlateBox(np.array(_quad(5, 5, 105, 35), float), 0.9)
    assert reader.read(np.zeros((50, 120, 3), np.uint8), box, "univ").groups == {
        "eup": 0.8,
        "na": 0.2,
    }
