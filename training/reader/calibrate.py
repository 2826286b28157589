"""Makes confidences mean what they say: one temperature, fitted on what the engine says in the end.

    python -m training.reader.calibrate --model models/reader_fp32.onnx --run runs/reader \\
        --photos FOLDER [--fonts FONTS]

The model is one exported without a temperature. Writes RUN/temperature.txt, which the next export
divides the logits by.
"""

import argparse
from pathlib import Path

import numpy as np
from zelvoran_anpr.reading.plate_box import PlateBox
from zelvoran_anpr.reading.plate_reader import PlateReader
from zelvoran_anpr.reading.runtime_session import open_session

from ..alphabet import folded
from ..fonts import catalogue
from .labelled import Labelled, real, rendered

_BINS = 10
_TRIED = np.geomspace(0.6, 2.4, 13)


class Warmed:
    """A reader's session whose probabilities are those of logits divided by a temperature."""

    def __init__(self, session, temperature: float):
        self._session, self._power = session, 1 / temperature

    def get_modelmeta(self):
        return self._session.get_modelmeta()

    def run(self, names: list[str], inputs: dict) -> list[np.ndarray]:
        cells, *others = self._session.run(names, inputs)
        cells = np.maximum(cells, 1e-30) ** self._power
        return [cells / cells.sum(axis=2, keepdims=True), *others]


def calibration_error(confidence: np.ndarray, right: np.ndarray) -> float:
    """Return the expected calibration error over ten bins of equal width; inputs have length N."""
    bins = np.minimum((confidence * _BINS).astype(int), _BINS - 1)
    gaps = [
        abs(confidence[bins == b].mean() - right[bins == b].mean()) * (bins == b).sum()
        for b in np.unique(bins)
    ]
    return float(sum(gaps) / max(len(confidence), 1))


def error_at(session, temperature: float, plates: list[Labelled]) -> float:
    """Return the engine's calibration error with the session at a temperature."""
    reader = PlateReader(Warmed(session, temperature))
    read = [reader.read(p.picture, PlateBox(p.corners, 1.0), "univ") for p in plates]
    right = [folded(r.text) == folded(p.text) for r, p in zip(read, plates, strict=True)]
    return calibration_error(np.array([r.confidence for r in read]), np.array(right))


def fitted_temperature(session, plates: list[Labelled]) -> tuple[float, float]:
    """Return the temperature with the smallest calibration error, and that error."""
    errors = [error_at(session, float(t), plates) for t in _TRIED]
    return float(_TRIED[int(np.argmin(errors))]), min(errors)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--model", type=Path, required=True)
    parser.add_argument("--run", type=Path, required=True)
    parser.add_argument("--photos", type=Path)
    parser.add_argument("--fonts", type=Path)
    args = parser.parse_args()
    plates = list(real(args.photos)) if args.photos else []
    if args.fonts:
        plates += rendered(catalogue(args.fonts), 300, seed=0)
    session = open_session(str(args.model), "cpu")
    temperature, error = fitted_temperature(session, plates)
    before = error_at(session, 1.0, plates)
    print(f"calibration error {before:.4f}, at temperature {temperature:.3f} {error:.4f}")
    (args.run / "temperature.txt").write_text(f"{temperature:.4f}\n")


if __name__ == "__main__":
    main()
