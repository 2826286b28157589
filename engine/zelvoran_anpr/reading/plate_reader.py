"""The plate reader: a whole plate, one row or two, in one look; when unsure, five looks vote.

The file takes N x 64 x 192 x 3 uint8 RGB and gives per cell of its line the probabilities of its
alphabet, class 0 being the gap between characters; `training/reader/export.py` writes it.
"""

from dataclasses import replace

import numpy as np

from . import quads
from .model_registry import find_reader, model_path
from .photo import Cut, Photo
from .plate_box import PlateBox
from .plate_formats import fit_to_format
from .plate_scripts import allowed, as_written, is_of_one_country, without_unread_upper_row
from .plate_text import PlateText
from .straighten import MARGIN, laid_flat
from .voting import SHORTEST, elected, text_of

HEIGHT, WIDTH = 64, 192  # pixels of the network's input
# Looks at a plate: shares of its width and height around the corners. Training shows all of them;
# each fails on other plates, so the readings vote.
_FIRST_MARGIN = (0.02, 0.035)  # the middle of what training shows
_MORE_MARGINS = ((0.05, 0.0), (0.0, 0.1), (0.05, 0.1), (0.0, 0.0))
_SURE = 0.95  # confidence from which the first look is enough
_LATIN_ONLY = "eup"


class PlateReader:
    """Holds one session; `read` may be called from several threads."""

    def __init__(self, session):
        self._session = session
        about = session.get_modelmeta().custom_metadata_map
        self._characters = about["characters"]
        self._groups = tuple(about["regions"].split(","))

    @classmethod
    def named(cls, model: str, backend: str) -> "PlateReader":
        """Return the reader of a model's name; raises ModelError or BackendError."""
        from .runtime_session import check_backend, open_session

        file = find_reader(model)
        check_backend(backend)
        return cls(open_session(model_path(file), backend))

    def read(self, image: Photo | np.ndarray, box: PlateBox, region: str) -> PlateText:
        """Return the plate's text without separators; empty where no plate is."""
        cells, groups = self._look(image, box, _FIRST_MARGIN)
        text = self._text(cells, region)
        if len(text.text) >= SHORTEST and text.confidence < _SURE:
            more, _ = self._look(image, box, *_MORE_MARGINS)
            cells = np.concatenate([cells, more])
            text = self._text(cells, region)
        text = without_unread_upper_row(text)
        if not is_of_one_country(text.text):
            text = self._text(cells, _LATIN_ONLY)
        told = dict(zip(self._groups, map(float, groups[0]), strict=True))
        return replace(as_written(fit_to_format(text, region), region), groups=told)

    def _look(self, image: Photo | np.ndarray, box: PlateBox, *margins: tuple) -> list[np.ndarray]:
        """Return looks x cells x classes and looks x groups probabilities."""
        looks = plate_pictures(image, [with_margin(box.corners, *m) for m in margins])
        return self._session.run(["characters", "region"], {"picture": looks})

    def _text(self, cells: np.ndarray, region: str) -> PlateText:
        possible = cells * allowed(self._characters, region)
        return elected([text_of(look, self._characters) for look in possible])


def with_margin(corners: np.ndarray, across: float, down: float) -> np.ndarray:
    """Return a plate's quad with a little of its surroundings, as shares of width and height."""
    width, height = quads.size(corners)
    x, y = across * width, down * height
    return quads.grow(corners, x, y, x, y)


def plate_picture(image: Photo | np.ndarray, quad: np.ndarray) -> np.ndarray:
    """Return a quad's inside as the network's input, large ones shrunk first to stay smooth."""
    [picture] = plate_pictures(image, [quad])
    return picture


def plate_pictures(image: Photo | np.ndarray, looks: list[np.ndarray]) -> np.ndarray:
    """Return the insides of several quads of one plate as the network's inputs."""
    around = quads.bounds(np.concatenate(looks))
    cut = _shrunk(Photo.of(image).cut(around, MARGIN), looks[0])
    return np.stack([laid_flat(cut, quad, HEIGHT, WIDTH) for quad in looks])


def _shrunk(cut: Cut | None, quad: np.ndarray) -> Cut | None:
    """Return a cut with boxes of pixels averaged where a quad has several for one of the input."""
    if cut is None:
        return None
    width, height = quads.size(quad)
    factor = int(cut.scale * min(width / WIDTH, height / HEIGHT))
    if factor < 2:
        return cut
    return Cut(cut.picture.reduce(factor), cut.origin, cut.scale / factor)
