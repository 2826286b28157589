"""Reads straightened pictures with an exported reader: what evaluation and the engine do alike."""

from dataclasses import dataclass
from pathlib import Path

import numpy as np

from ..alphabet import CHARACTERS, EMPTY, GROUPS


@dataclass(frozen=True)
class Reading:
    """`confidence` is that of the least certain slot up to the first empty one, 0..1."""

    text: str
    confidence: float
    group: str


class ExportedReader:
    """One ONNX Runtime session; `read` takes N x H x W x 3 uint8 pictures."""

    def __init__(self, path: Path, threads: int = 2):
        import onnxruntime

        options = onnxruntime.SessionOptions()
        options.intra_op_num_threads = threads
        options.add_session_config_entry("session.intra_op.allow_spinning", "0")
        self._session = onnxruntime.InferenceSession(
            str(path), options, providers=["CPUExecutionProvider"]
        )

    def read(self, pictures: np.ndarray) -> list[Reading]:
        characters, regions = self._session.run(None, {"picture": pictures})
        return [reading(c, r) for c, r in zip(characters, regions, strict=True)]


def reading(characters: np.ndarray, regions: np.ndarray) -> Reading:
    """Return the reading of SLOTS x CLASSES and region probabilities."""
    best = characters.argmax(axis=1)
    ends = np.flatnonzero(best == EMPTY)
    length = int(ends[0]) if len(ends) else len(best)
    sure = characters.max(axis=1)[: min(length + 1, len(best))]
    text = "".join(CHARACTERS[i - 1] for i in best[:length])
    return Reading(text, float(sure.min()), GROUPS[int(regions.argmax())])
