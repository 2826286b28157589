"""Reads straightened pictures with an exported reader: what evaluation and the engine do alike."""

from dataclasses import dataclass
from pathlib import Path

import numpy as np

from ..alphabet import CHARACTERS, GAP, GROUPS


@dataclass(frozen=True)
class Reading:
    """`confidence` is that of the least certain character, 0..1; of the emptiness without text."""

    text: str
    confidence: float
    group: str


class ExportedReader:
    """One ONNX Runtime session; `read` takes N x H x W x 3 uint8 pictures."""

    def __init__(self, path: Path, threads: int = 2):
        import onnxruntime

        onnxruntime.disable_telemetry_events()
        options = onnxruntime.SessionOptions()
        options.intra_op_num_threads = threads
        options.add_session_config_entry("session.intra_op.allow_spinning", "0")
        self._session = onnxruntime.InferenceSession(
            str(path), options, providers=["CPUExecutionProvider"]
        )

    def read(self, pictures: np.ndarray) -> list[Reading]:
        characters, regions = self._session.run(None, {"picture": pictures})
        return [reading(c, r) for c, r in zip(characters, regions, strict=True)]


def reading(cells: np.ndarray, regions: np.ndarray) -> Reading:
    """Return the reading of CELLS x CLASSES and region probabilities."""
    found = collapsed(cells)
    text = "".join(CHARACTERS[i - 1] for i, _ in found)
    return Reading(text, least_certain(cells, found), GROUPS[int(regions.argmax())])


def collapsed(cells: np.ndarray) -> list[tuple[int, float]]:
    """Return (class, confidence) of the characters in CELLS x CLASSES probabilities.

    Neighbouring cells of one class are one character, as sure as the surest of them.
    """
    best = cells.argmax(axis=1)
    starts = np.flatnonzero(np.diff(best, prepend=-1))
    runs = zip(starts, [*starts[1:], len(best)], strict=True)
    return [
        (int(best[start]), float(cells[start:end, best[start]].max()))
        for start, end in runs
        if best[start] != GAP
    ]


def least_certain(cells: np.ndarray, found: list[tuple[int, float]]) -> float:
    """Return the confidence of a plate with these characters."""
    return min((sure for _, sure in found), default=float(cells[:, GAP].min()))
