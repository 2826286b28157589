"""The plate detector: scores, boxes and corners straight from one network, in three looks.

The file takes N x H x W x 3 uint8 RGB, sides multiples of 32, and gives per point a score, a box
and four corners in its own pixels; `training/detector/export.py` writes it.
"""

import numpy as np

from . import quads
from .fields import Field, part, whole
from .model_registry import find_detector, model_path
from .photo import Photo
from .plate_box import PlateBox

_LEAST_SCORE = 0.3
_LEAST_HINT = 0.12  # score from which a small find is worth a closer look
_CONFIRMED = 0.5  # closer look's score that makes a plate of a hint
_LEAST_WITNESS = 0.1  # score of a find that may still say where a plate's corners are
_SAME = 0.4  # intersection over union from which two boxes are one plate
_SAME_CLOSER = 0.3  # the same between a find and what a closer look shows of it
_SAME_CORNERS = 0.6  # intersection over union from which finds tell the corners together
_SHARP = 96  # pixels that a coarse photo must have across a plate
_LEAST_BLURRED = 0.2  # closer look's score from which a find is worth a finer photo
_MOST = 300  # points looked at
_MOST_CLOSER = 8  # closer looks at one photo
_SMALL = 90  # pixels of the network's input; wider plates need no closer look
_OVERVIEW = 0.35  # size of the look at large plates, as share of the usual one
_LARGE = 0.3  # least width of an overview's plate, as share of the photo's longer side
_INSIDE = 0.7  # shared part of a find from which it is a part of a large one
_SURER = 1.8  # how much surer than the large one a part must be to stand for itself


class PlateDetector:
    """Holds one session; `detect` may be called from several threads."""

    def __init__(self, session, longest: int):
        """`longest` is the side in pixels to which a photo's longer one is scaled."""
        self._session = session
        self._longest = longest

    @classmethod
    def named(cls, model: str, backend: str) -> "PlateDetector":
        """Return the detector of a model's name; raises ModelError or BackendError."""
        from .runtime_session import check_backend, open_session

        chosen = find_detector(model)
        check_backend(backend)
        return cls(open_session(model_path(chosen.file), backend), chosen.longest)

    def detect(self, image: Photo | np.ndarray) -> list[PlateBox]:
        """Return plates on an H x W x 3 uint8 RGB array, the surest first.

        An overview shows plates that fill the photo, the usual look the others, and a closer look
        tells whether small ones are plates and where their corners are.
        """
        image = Photo.of(image)
        field = whole(image, self._longest)
        rows, columns = (round(side * field.scale) for side in image.shape[:2])
        overview = whole(field.pixels[:rows, :columns], round(self._longest * _OVERVIEW))
        [large] = self._look([Field(overview.pixels, overview.scale * field.scale)], _LEAST_SCORE)
        large = [box for box in large if quads.size(box.corners)[0] > _LARGE * max(image.shape)]
        [finds] = self._look([field], _LEAST_HINT)
        return merged(self._settled(image, finds, field.scale), large)

    def _look(self, fields: list[Field], least: float) -> list[list[PlateBox]]:
        """Return for each of the fields, all of one size, its plates in the photo's pixels."""
        pictures = np.stack([field.pixels for field in fields])
        scores, boxes, corners = self._session.run(None, {"picture": pictures})
        return [
            plates(
                scores[i],
                field.on_photo(boxes[i].reshape(-1, 2, 2)).reshape(-1, 4),
                field.on_photo(corners[i].reshape(-1, 4, 2)),
                least,
            )
            for i, field in enumerate(fields)
        ]

    def _settled(self, image: Photo, finds: list[PlateBox], scale: float) -> list[PlateBox]:
        """Return the large finds, and the small ones that a closer look does not deny."""
        small = [box for box in finds if _width(box) * scale <= _SMALL][:_MOST_CLOSER]
        sure = [b for b in finds if b.confidence >= _LEAST_SCORE and _width(b) * scale > _SMALL]
        small = self._sharpened(image, small)
        if not small:
            return sure
        fields = [part(image, quads.bounds(box.corners)) for box in small]
        looks = self._look(fields, _LEAST_SCORE)
        settled = [settled_find(box, look) for box, look in zip(small, looks, strict=True)]
        return sure + [box for box in settled if box]

    def _sharpened(self, image: Photo, small: list[PlateBox]) -> list[PlateBox]:
        """Return the small finds of which the photo, unpacked anew if need be, shows enough.

        Finds that are blurred in a coarse photo are looked at as they are, to see whether one of
        them is worth the full picture.
        """
        blurred = [box for box in small if _width(box) * image.scale < _SHARP]
        if image.scale == 1 or not blurred:
            return small
        fields = [part(image, quads.bounds(box.corners)) for box in blurred]
        looks = self._look(fields, _LEAST_BLURRED)
        worth = [b for b, look in zip(blurred, looks, strict=True) if _may_be_plate(b, look)]
        if not worth:
            return [box for box in small if _width(box) * image.scale >= _SHARP]
        image.sharpen(_SHARP / min(_width(box) for box in worth))
        return small


def _may_be_plate(find: PlateBox, blurred: list[PlateBox]) -> bool:
    place = quads.bounds(find.corners)
    seen = any(quads.iou(quads.bounds(box.corners), place) >= _SAME_CLOSER for box in blurred)
    return seen or find.confidence >= _CONFIRMED


def settled_find(find: PlateBox, closer: list[PlateBox]) -> PlateBox | None:
    """Return what a closer look shows of a find; None when that is no plate."""
    place = quads.bounds(find.corners)
    fits = [(quads.iou(quads.bounds(box.corners), place), box) for box in closer]
    fits = [(fit * box.confidence, box) for fit, box in fits if fit >= _SAME_CLOSER]
    if not fits:
        return find if find.confidence >= _CONFIRMED else None
    best = max(fits, key=lambda one: one[0])[1]
    if find.confidence < _LEAST_SCORE and best.confidence < _CONFIRMED:
        return None
    return PlateBox(best.corners, max(find.confidence, best.confidence))


def merged(finds: list[PlateBox], large: list[PlateBox]) -> list[PlateBox]:
    """Return large plates and the finds that are no parts of them, the surest first."""
    kept = [box for box in finds if not any(_is_part(box, whole) for whole in large)]
    whole = [box for box in large if not any(_same(box, find) for find in kept)]
    return sorted(kept + whole, key=lambda box: -box.confidence)


def plates(
    scores: np.ndarray, boxes: np.ndarray, corners: np.ndarray, least: float
) -> list[PlateBox]:
    """Return the best of overlapping finds: scores P, boxes P x 4, corners P x 4 x 2.

    Their scores are at least `least`. Corners are the mean of all that see the same place, by
    their scores.
    """
    order = np.argsort(-scores, kind="stable")[:_MOST]
    order = order[scores[order] >= _LEAST_WITNESS]
    kept: list[int] = []
    for i in order[scores[order] >= least]:
        if all(quads.iou(boxes[i], boxes[j]) < _SAME for j in kept):
            kept.append(int(i))
    return [
        PlateBox(_mean_corners(i, order, scores, boxes, corners), float(scores[i])) for i in kept
    ]


def _mean_corners(chosen: int, order, scores, boxes, corners) -> np.ndarray:
    near = [i for i in order if i == chosen or quads.iou(boxes[i], boxes[chosen]) > _SAME_CORNERS]
    return np.average(corners[near].astype(np.float64), axis=0, weights=scores[near])


def _width(box: PlateBox) -> float:
    left, top, right, bottom = quads.bounds(box.corners)
    return max(right - left, bottom - top)


def _is_part(box: PlateBox, whole: PlateBox) -> bool:
    inner, outer = quads.bounds(box.corners), quads.bounds(whole.corners)
    inside = quads.overlap_area(inner, outer) > _INSIDE * quads.box_area(inner)
    return inside and box.confidence < _SURER * whole.confidence


def _same(one: PlateBox, other: PlateBox) -> bool:
    return quads.iou(quads.bounds(one.corners), quads.bounds(other.corners)) > _SAME
