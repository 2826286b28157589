"""The plate detector of the first models: text lines whose shape could be a plate's."""

import numpy as np

from . import text_detection
from .model_registry import find_detector, model_path
from .plate_box import PlateBox
from .plate_shapes import plate_candidates


class PlateDetector:
    """Holds one session; `detect` may be called from several threads."""

    def __init__(self, model: str, backend: str):
        from .runtime_session import check_backend, open_session

        chosen = find_detector(model)
        check_backend(backend)
        self._scales = chosen.scales
        self._session = open_session(model_path(chosen.file), backend)

    def detect(self, image: np.ndarray) -> list[PlateBox]:
        """Return plate candidates, the surest first; they may overlap."""
        lines = [
            line
            for scale in self._scales
            for line in text_detection.find_text(self._session, image, scale)
        ]
        return plate_candidates(image, lines)
