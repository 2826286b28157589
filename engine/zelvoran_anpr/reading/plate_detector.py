"""The plate detector: scores, boxes and corners straight from one network.

The file takes 1 x H x W x 3 uint8 RGB, sides multiples of 32, and gives per point a score, a box
and four corners in its own pixels; `training/detector/export.py` writes it.
"""

import numpy as np
from PIL import Image

from . import quads
from .model_registry import find_detector, model_path
from .plate_box import PlateBox

_STEP = 32
_GREY = 114  # what training fills the rest of a picture with
_LEAST_SCORE = 0.3
_LEAST_WITNESS = 0.1  # score of a find that may still say where a plate's corners are
_SAME = 0.4  # intersection over union from which two boxes are one plate
_SAME_CORNERS = 0.6  # intersection over union from which finds tell the corners together
_MOST = 300  # points looked at
_OVERVIEW = 0.35  # size of the look at large plates, as share of the usual one
_LARGE = (
    0.3  # width of a plate that only the overview sees whole, as share of the photo's longer side
)
_INSIDE = 0.7  # shared part of a find from which it is a part of a large one
_SURER = 1.8  # how much surer than the large one a part must be to stand for itself


class PlateDetector:
    """Holds one session; `detect` may be called from several threads."""

    def __init__(self, model: str, backend: str):
        from .runtime_session import check_backend, open_session

        chosen = find_detector(model)
        check_backend(backend)
        self._session = open_session(model_path(chosen.file), backend)
        self._longest = chosen.longest

    def detect(self, image: np.ndarray) -> list[PlateBox]:
        """Return plates on an H x W x 3 uint8 RGB array, the surest first.

        Two looks: one in which small plates are large enough, and an overview in which plates that
        fill the photo are small enough to be seen whole.
        """
        overview = self._look(image, round(self._longest * _OVERVIEW))
        large = [box for box in overview if quads.size(box.corners)[0] > _LARGE * max(image.shape)]
        return merged(self._look(image, self._longest), large)

    def _look(self, image: np.ndarray, longest: int) -> list[PlateBox]:
        field, scale = fitted(image, longest)
        scores, boxes, corners = self._session.run(None, {"picture": field})
        return plates(scores[0], boxes[0] / scale, corners[0].reshape(-1, 4, 2) / scale)


def fitted(image: np.ndarray, longest: int) -> tuple[np.ndarray, float]:
    """Return the network's input and its scale; what is beside the photo is grey."""
    height, width = image.shape[:2]
    scale = longest / max(height, width)
    size = max(1, round(width * scale)), max(1, round(height * scale))
    photo = Image.fromarray(image)
    small = np.asarray(photo.resize(size, Image.Resampling.BILINEAR, reducing_gap=2.0))
    rows, columns = (-(-side // _STEP) * _STEP for side in small.shape[:2])
    field = np.full((1, rows, columns, 3), _GREY, np.uint8)
    field[0, : small.shape[0], : small.shape[1]] = small
    return field, scale


def merged(finds: list[PlateBox], large: list[PlateBox]) -> list[PlateBox]:
    """Return large plates and the finds that are no parts of them, the surest first."""
    kept = [box for box in finds if not any(_is_part(box, whole) for whole in large)]
    whole = [box for box in large if not any(_same(box, find) for find in kept)]
    return sorted(kept + whole, key=lambda box: -box.confidence)


def _is_part(box: PlateBox, whole: PlateBox) -> bool:
    inner, outer = quads.bounds(box.corners), quads.bounds(whole.corners)
    inside = quads.overlap_area(inner, outer) > _INSIDE * quads.box_area(inner)
    return inside and box.confidence < _SURER * whole.confidence


def _same(one: PlateBox, other: PlateBox) -> bool:
    return quads.iou(quads.bounds(one.corners), quads.bounds(other.corners)) > _SAME


def plates(scores: np.ndarray, boxes: np.ndarray, corners: np.ndarray) -> list[PlateBox]:
    """Return the best of overlapping finds: scores P, boxes P x 4, corners P x 4 x 2.

    Its corners are the mean of all that see the same place, by their scores.
    """
    order = np.argsort(-scores, kind="stable")[:_MOST]
    order = order[scores[order] >= _LEAST_WITNESS]
    kept: list[int] = []
    for i in order[scores[order] >= _LEAST_SCORE]:
        if all(quads.iou(boxes[i], boxes[j]) < _SAME for j in kept):
            kept.append(int(i))
    return [
        PlateBox(_mean_corners(i, order, scores, boxes, corners), float(scores[i])) for i in kept
    ]


def _mean_corners(chosen: int, order, scores, boxes, corners) -> np.ndarray:
    near = [i for i in order if i == chosen or quads.iou(boxes[i], boxes[chosen]) > _SAME_CORNERS]
    return np.average(corners[near].astype(np.float64), axis=0, weights=scores[near])
