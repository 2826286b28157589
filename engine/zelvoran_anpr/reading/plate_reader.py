"""The plate reader of the first models: a general text reader on straightened text lines."""

from collections import defaultdict
from math import prod

import numpy as np

from . import quads
from .model_registry import find_reader, model_path
from .plate_alphabet import plate_characters
from .plate_box import PlateBox
from .plate_formats import fit_to_format
from .plate_text import PlateText
from .straighten import straighten
from .text_recognition import LINE_HEIGHT, TextReader

_WIDTHS = (32, 640)  # pixels of a line picture
# How a line is cut out: margins along and across it in text heights, and a stretch in width.
# Each cut fails on other plates, so the readings vote.
_FIRST_VIEW = (0.0, 0.0, 1.0)
_OTHER_VIEWS = ((0.0, -0.1, 1.2), (-0.05, -0.05, 1.0))
_WORTH_A_VOTE = (2, 10)  # characters


class PlateReader:
    """Holds one session; `read` may be called from several threads."""

    def __init__(self, model: str, backend: str):
        from .runtime_session import check_backend, open_session

        chosen = find_reader(model)
        check_backend(backend)
        self._reader = TextReader(open_session(model_path(chosen.file), backend))

    def read(self, image: np.ndarray, box: PlateBox, region: str) -> PlateText:
        """Return the text of a box's lines, joined, without separators."""
        rows = tuple(self._read_row(image, quad, region) for quad in box.lines)
        joined = PlateText(
            "".join(row.text for row in rows),
            tuple(c for row in rows for c in row.confidences),
            tuple(raw for row in rows for raw in row.rows),
        )
        return fit_to_format(joined, region)

    def _read_row(self, image: np.ndarray, quad: np.ndarray, region: str) -> PlateText:
        first = self._view(image, quad, region, _FIRST_VIEW)
        if not _WORTH_A_VOTE[0] <= len(first.text) <= _WORTH_A_VOTE[1]:
            return first
        return _elected([first, *(self._view(image, quad, region, v) for v in _OTHER_VIEWS)])

    def _view(self, image: np.ndarray, quad: np.ndarray, region: str, view: tuple) -> PlateText:
        return plate_characters(self._reader.read(_picture(image, quad, *view)), region)


def _picture(image: np.ndarray, quad: np.ndarray, x: float, y: float, stretch: float):
    height = quads.size(quad)[1]
    cut = quads.grow(quad, x * height, y * height, x * height, y * height)
    width, height = quads.size(cut)
    columns = round(stretch * width / max(height, 1) * LINE_HEIGHT)
    return straighten(image, cut, LINE_HEIGHT, min(max(columns, _WIDTHS[0]), _WIDTHS[1]))


def _elected(readings: list[PlateText]) -> PlateText:
    """Return the reading with most weight; its confidences are the mean of those that agree."""
    votes: dict[str, list[PlateText]] = defaultdict(list)
    for reading in readings:
        votes[reading.text].append(reading)
    agreeing = max(votes.values(), key=lambda same: sum(prod(r.confidences) for r in same))
    means = np.mean([reading.confidences for reading in agreeing], axis=0)
    return PlateText(agreeing[0].text, tuple(map(float, means)), agreeing[0].rows)
