"""Makes confidences mean what they say: one temperature, fitted on plates the training did not see.

    python -m training.reader.calibrate --run runs/reader --photos FOLDER [--fonts FONTS]

Writes RUN/temperature.txt, which the export divides the logits by.
"""

import argparse
from pathlib import Path

import numpy as np

from ..alphabet import folded
from ..fonts import catalogue
from .labelled import Labelled, real, rendered
from .predict import collapsed, least_certain, reading

_BINS = 10


def calibration_error(confidence: np.ndarray, right: np.ndarray) -> float:
    """Return the expected calibration error over ten bins of equal width; inputs have length N."""
    bins = np.minimum((confidence * _BINS).astype(int), _BINS - 1)
    gaps = [
        abs(confidence[bins == b].mean() - right[bins == b].mean()) * (bins == b).sum()
        for b in np.unique(bins)
    ]
    return float(sum(gaps) / max(len(confidence), 1))


def confidences(logits: np.ndarray, temperature: float) -> np.ndarray:
    """Return per plate the confidence of its least certain character; N x CELLS x CLASSES."""
    scaled = logits / temperature
    scaled = np.exp(scaled - scaled.max(axis=2, keepdims=True))
    scaled /= scaled.sum(axis=2, keepdims=True)
    return np.array([least_certain(cells, collapsed(cells)) for cells in scaled])


def fitted_temperature(logits: np.ndarray, right: np.ndarray) -> float:
    """Return the temperature from 0.5 to 4 with the smallest calibration error."""
    tried = np.geomspace(0.5, 4, 60)
    errors = [calibration_error(confidences(logits, t), right) for t in tried]
    return float(tried[int(np.argmin(errors))])


def logits_of(network, plates: list[Labelled]) -> np.ndarray:
    import torch

    pictures = torch.from_numpy(np.stack([p.picture for p in plates]))
    with torch.inference_mode():
        return np.concatenate([network(part)[0].float().numpy() for part in pictures.split(32)])


def exact(logits: np.ndarray, plates: list[Labelled]) -> np.ndarray:
    """Return per plate whether its text is right, O=0 and I=1 folded."""
    texts = [reading(one, np.zeros(1)).text for one in logits]
    pairs = zip(texts, plates, strict=True)
    return np.array([folded(text) == folded(plate.text) for text, plate in pairs])


def main() -> None:
    from .load import trained

    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--run", type=Path, required=True)
    parser.add_argument("--photos", type=Path)
    parser.add_argument("--fonts", type=Path)
    args = parser.parse_args()
    plates = list(real(args.photos)) if args.photos else []
    if args.fonts:
        plates += rendered(catalogue(args.fonts), 1000, seed=0)
    logits = logits_of(trained(args.run), plates)
    right = exact(logits, plates)
    temperature = fitted_temperature(logits, right)
    for name, value in (("as trained", 1.0), ("calibrated", temperature)):
        error = calibration_error(confidences(logits, value), right)
        print(f"{name}: temperature {value:.3f}, calibration error {error:.4f}")
    (args.run / "temperature.txt").write_text(f"{temperature:.4f}\n")


if __name__ == "__main__":
    main()
