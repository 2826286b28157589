"""The plate reader: a whole plate, one row or two, in one look; when unsure, five looks vote.

The file takes N x 64 x 192 x 3 uint8 RGB and gives per cell of its line the probabilities of its
alphabet, class 0 being the gap between characters; `training/reader/export.py` writes it.
"""

from collections import defaultdict
from math import prod

import numpy as np

from . import quads
from .model_registry import find_reader, model_path
from .plate_box import PlateBox
from .plate_formats import fit_to_format
from .plate_scripts import allowed, is_of_one_country
from .plate_text import PlateText
from .straighten import straighten

HEIGHT, WIDTH = 64, 192  # pixels of the network's input
_GAP = 0
# Looks at a plate: shares of its width and height around the corners. Training shows all of them;
# each fails on other plates, so the readings vote.
_FIRST_MARGIN = (0.02, 0.035)  # the middle of what training shows
_MARGINS = (_FIRST_MARGIN, (0.05, 0.0), (0.0, 0.1), (0.05, 0.1), (0.0, 0.0))
_SURE = 0.95  # confidence from which the first look is enough
_DOUBTFUL = 0.5  # detector's confidence below which an empty first look is enough
_NOTHING = 0.3  # weight of a look that sees no plate
_LATIN_ONLY = "eup"


class PlateReader:
    """Holds one session; `read` may be called from several threads."""

    def __init__(self, model: str, backend: str):
        from .runtime_session import check_backend, open_session

        file = find_reader(model)
        check_backend(backend)
        self._session = open_session(model_path(file), backend)
        self._characters = self._session.get_modelmeta().custom_metadata_map["characters"]

    def read(self, image: np.ndarray, box: PlateBox, region: str) -> PlateText:
        """Return the plate's text without separators; empty where no plate is."""
        cells = self._look(image, box, _FIRST_MARGIN)
        text = self._text(cells, region)
        if text.confidence < _SURE and (text.text or box.confidence >= _DOUBTFUL):
            cells = self._look(image, box, *_MARGINS)
            text = self._text(cells, region)
        if not is_of_one_country(text.text):
            text = self._text(cells, _LATIN_ONLY)
        return fit_to_format(text, region)

    def _look(self, image: np.ndarray, box: PlateBox, *margins: tuple) -> np.ndarray:
        """Return the cells' probabilities: looks x cells x classes."""
        looks = [plate_picture(image, with_margin(box.corners, *m)) for m in margins]
        return self._session.run(["characters"], {"picture": np.stack(looks)})[0]

    def _text(self, cells: np.ndarray, region: str) -> PlateText:
        possible = cells * allowed(self._characters, region)
        return elected([text_of(look, self._characters) for look in possible])


def with_margin(corners: np.ndarray, across: float, down: float) -> np.ndarray:
    """Return a plate's quad with a little of its surroundings, as shares of width and height."""
    width, height = quads.size(corners)
    x, y = across * width, down * height
    return quads.grow(corners, x, y, x, y)


def plate_picture(image: np.ndarray, quad: np.ndarray) -> np.ndarray:
    """Return a quad's inside as the network's input, large ones shrunk first to stay smooth."""
    width, height = quads.size(quad)
    factor = int(min(width / WIDTH, height / HEIGHT))
    if factor < 2:
        return straighten(image, quad, HEIGHT, WIDTH)
    large = straighten(image, quad, HEIGHT * factor, WIDTH * factor)
    blocks = large.reshape(HEIGHT, factor, WIDTH, factor, 3)
    return blocks.mean(axis=(1, 3)).round().astype(np.uint8)


def text_of(cells: np.ndarray, characters: str) -> PlateText:
    """Return the text of cells x classes probabilities.

    Neighbouring cells of one class are one character, as sure as the surest of them.
    """
    best = cells.argmax(axis=1)
    starts = np.flatnonzero(np.diff(best, prepend=-1))
    runs = zip(starts, [*starts[1:], len(best)], strict=True)
    kept = [(start, end) for start, end in runs if best[start] != _GAP]
    text = "".join(characters[best[start] - 1] for start, _ in kept)
    sure = tuple(float(cells[start:end, best[start]].max()) for start, end in kept)
    return PlateText(text, sure)


def elected(readings: list[PlateText]) -> PlateText:
    """Return the reading with most weight, less sure by the root of the share that agrees."""
    votes: dict[str, list[PlateText]] = defaultdict(list)
    for reading in readings:
        votes[reading.text].append(reading)
    agreeing = max(votes.values(), key=lambda same: sum(map(_weight, same)))
    share = (len(agreeing) / len(readings)) ** 0.5
    sure = np.mean([reading.confidences for reading in agreeing], axis=0) * share
    return PlateText(agreeing[0].text, tuple(map(float, sure)) if agreeing[0].text else ())


def _weight(reading: PlateText) -> float:
    return prod(reading.confidences) if reading.text else _NOTHING
