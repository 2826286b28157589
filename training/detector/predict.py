"""Finds plates with an exported detector: scaling, the network, the best of overlapping boxes."""

from dataclasses import dataclass
from pathlib import Path

import numpy as np
from PIL import Image

STEP = 32  # sides of the network's input are multiples of it
_OVERLAP = 0.4  # intersection over union from which two boxes are one plate


@dataclass(frozen=True)
class Found:
    """A plate on a photo: left, top, right, bottom; 4 x 2 corners; both in the photo's pixels."""

    score: float
    box: np.ndarray
    corners: np.ndarray


def fitted(photo: Image.Image, longest: int) -> tuple[np.ndarray, float]:
    """Return the network's input (1 x H x W x 3 uint8) and its scale; the rest is grey."""
    scale = longest / max(photo.size)
    size = [max(1, round(side * scale)) for side in photo.size]
    small = np.asarray(photo.resize(size, Image.Resampling.BILINEAR, reducing_gap=2.0))
    height, width = (-(-side // STEP) * STEP for side in small.shape[:2])
    field = np.full((1, height, width, 3), 114, np.uint8)
    field[0, : small.shape[0], : small.shape[1]] = small
    return field, scale


class ExportedDetector:
    """One ONNX Runtime session; `longest` is the longer side it scales photos to."""

    def __init__(self, path: Path, longest: int, threads: int = 2):
        import onnxruntime

        onnxruntime.disable_telemetry_events()
        options = onnxruntime.SessionOptions()
        options.intra_op_num_threads = threads
        options.add_session_config_entry("session.intra_op.allow_spinning", "0")
        self._session = onnxruntime.InferenceSession(
            str(path), options, providers=["CPUExecutionProvider"]
        )
        self._longest = longest

    def find(self, photo: Image.Image, least: float = 0.3) -> list[Found]:
        """Return plates with a score of at least `least`, the surest first."""
        field, scale = fitted(photo, self._longest)
        scores, boxes, corners = (part[0] for part in self._session.run(None, {"picture": field}))
        order = np.argsort(-scores)
        order = order[scores[order] >= least][:300]
        kept = best_of_overlapping(boxes[order])
        return [
            Found(float(scores[i]), boxes[i] / scale, corners[i].reshape(4, 2) / scale)
            for i in order[kept]
        ]


def best_of_overlapping(boxes: np.ndarray) -> list[int]:
    """Return which of N x 4 boxes, the surest first, overlap no better one."""
    kept: list[int] = []
    for i, box in enumerate(boxes):
        if all(iou(box, boxes[j]) < _OVERLAP for j in kept):
            kept.append(i)
    return kept


def iou(one: np.ndarray, other: np.ndarray) -> float:
    """Return intersection over union of two boxes."""
    sides = np.minimum(one[2:], other[2:]) - np.maximum(one[:2], other[:2])
    shared = float(np.prod(np.maximum(sides, 0)))
    areas = [float(np.prod(box[2:] - box[:2])) for box in (one, other)]
    return shared / max(sum(areas) - shared, 1e-9)
