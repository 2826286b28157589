"""Measures an exported reader in the engine, given the plate: exact text, strict and O=0, I=1.

    python -m training.reader.evaluate --model reader_fp32.onnx --photos FOLDER --fonts FONTS

Votes, scripts and formats are the engine's own. Plates above 95 % rendered and below 40 % real
mean: mend the generator before training longer.
"""

import argparse
from collections import defaultdict
from pathlib import Path

import numpy as np
from zelvoran_anpr.reading.plate_box import PlateBox
from zelvoran_anpr.reading.plate_reader import PlateReader
from zelvoran_anpr.reading.plate_text import PlateText
from zelvoran_anpr.reading.runtime_session import open_session

from ..alphabet import folded
from ..fonts import catalogue
from .calibrate import calibration_error
from .labelled import Labelled, real, rendered


def read_all(model: PlateReader, plates: list[Labelled], region: str) -> list[PlateText]:
    return [model.read(p.picture, PlateBox(p.corners, 1.0), region) for p in plates]


def scores(plates: list[Labelled], readings: list[PlateText]) -> dict[str, float]:
    """Return shares of exact texts and the calibration error."""
    pairs = [(p.text, r.text) for p, r in zip(plates, readings, strict=True)]
    right = np.array([folded(a) == folded(b) for a, b in pairs])
    return {
        "plates": len(pairs),
        "strict": float(np.mean([a == b for a, b in pairs])),
        "folded": float(right.mean()),
        "length": float(np.mean([len(a) == len(b) for a, b in pairs])),
        "ece": calibration_error(np.array([r.confidence for r in readings]), right),
    }


def report(title: str, plates: list[Labelled], readings: list[PlateText]) -> None:
    told = " ".join(f"{name} {value:.3f}" for name, value in scores(plates, readings).items())
    print(f"{title:10} {told}")


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--model", type=Path, required=True)
    parser.add_argument("--photos", type=Path)
    parser.add_argument("--fonts", type=Path)
    parser.add_argument("--rendered", type=int, default=1000)
    parser.add_argument("--region", default="univ")
    parser.add_argument("--wrong", action="store_true", help="list the texts read wrongly")
    args = parser.parse_args()
    model = PlateReader(open_session(str(args.model), "cpu"))
    plates = list(real(args.photos)) if args.photos else []
    if args.fonts:
        plates += rendered(catalogue(args.fonts), args.rendered, seed=0)
    readings = read_all(model, plates, args.region)
    sets = defaultdict(list)
    for pair in zip(plates, readings, strict=True):
        sets[pair[0].subset].append(pair)
        if args.wrong and folded(pair[0].text) != folded(pair[1].text):
            print(
                f"{pair[0].subset} {pair[0].text} read as {pair[1].text} {pair[1].confidence:.2f}"
            )
    for subset, pairs in sets.items():
        report(subset, *map(list, zip(*pairs, strict=True)))


if __name__ == "__main__":
    main()
