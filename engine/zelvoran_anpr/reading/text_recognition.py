"""Reads the characters on pictures of text lines with a CTC network."""

from dataclasses import dataclass

import numpy as np
from onnxruntime import InferenceSession

LINE_HEIGHT = 48  # pixels, fixed by the network
_BLANK = 0


@dataclass(frozen=True)
class ReadText:
    """Text with one confidence (0..1) per character."""

    text: str
    confidences: tuple[float, ...]


class TextReader:
    """Reads pictures of text lines; may be used from several threads."""

    def __init__(self, session: InferenceSession):
        self._session = session
        self._input = session.get_inputs()[0].name
        characters = session.get_modelmeta().custom_metadata_map["character"].split("\n")
        self._alphabet = ["", *characters, " "]

    def read(self, picture: np.ndarray) -> ReadText:
        """Read an RGB picture of LINE_HEIGHT rows and any width."""
        tensor = (picture[..., ::-1].astype(np.float32) / 127.5 - 1).transpose(2, 0, 1)[None]
        scores = self._session.run(None, {self._input: tensor})[0][0]
        best = scores.argmax(axis=1)
        text, sure = [], []
        for step in np.flatnonzero(best != np.concatenate([[_BLANK], best[:-1]])):
            if best[step] != _BLANK:
                text.append(self._alphabet[best[step]])
                sure.append(float(scores[step, best[step]]))
        return ReadText("".join(text), tuple(sure))
