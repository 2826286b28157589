"""Measures an exported detector in the engine: recall on labelled photos, finds on others.

    python -m training.detector.evaluate --model detector_fp32.onnx --longest 640 \\
        --photos FOLDER --plain FOLDER

Each photo of FOLDER/plates.csv (file,x,y,width,height,text) has one labelled plate. Photos of
--known (file,left,top,right,bottom) lend plate-free parts: their plates are painted over.
"""

import argparse
import csv
from collections import defaultdict
from pathlib import Path

import numpy as np
from PIL import Image, ImageOps
from zelvoran_anpr.reading import quads
from zelvoran_anpr.reading.plate_detector import PlateDetector
from zelvoran_anpr.reading.runtime_session import open_session

from .photos import erase, known_plates, without_plates

_HIT = 0.4  # intersection over union


def labelled(folder: Path):
    """Yield (set, photo, box) of plates.csv."""
    with open(folder / "plates.csv", encoding="utf-8") as file:
        for row in csv.DictReader(file):
            x, y, wide, high = (float(row[key]) for key in ("x", "y", "width", "height"))
            photo = ImageOps.exif_transpose(Image.open(folder / row["file"])).convert("RGB")
            yield row["file"].split("/")[0], photo, np.array([x, y, x + wide, y + high])


def finds(model: PlateDetector, photo: Image.Image, least: float) -> list:
    """Return the plates that the engine's detector is at least so sure of."""
    return [box for box in model.detect(np.asarray(photo)) if box.confidence >= least]


def recall(model: PlateDetector, folder: Path, least: float) -> dict[str, tuple[float, float]]:
    """Return per set the share of plates found, and the further finds per photo."""
    hits, others = defaultdict(list), defaultdict(list)
    for subset, photo, box in labelled(folder):
        found = finds(model, photo, least)
        right = [quads.iou(quads.bounds(f.corners), tuple(box)) > _HIT for f in found]
        hits[subset].append(any(right))
        others[subset].append(len(right) - any(right))
    return {s: (float(np.mean(hits[s])), float(np.mean(others[s]))) for s in hits}


def false_finds(model: PlateDetector, photos: list, least: float) -> float:
    """Return finds per photo where none should be."""
    counts = []
    for photo in photos:
        picture = Image.open(photo.file).convert("RGB")
        for left, top, right, bottom in photo.boxes:
            dx, dy = 0.2 * (right - left), 0.3 * (bottom - top)
            erase(picture, np.array([left - dx, top - dy, right + dx, bottom + dy]))
        counts.append(len(finds(model, picture, least)))
    return float(np.mean(counts))


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--model", type=Path, required=True)
    parser.add_argument("--longest", type=int, default=640)
    parser.add_argument("--photos", type=Path)
    parser.add_argument("--plain", type=Path)
    parser.add_argument("--known", type=Path)
    parser.add_argument("--least", type=float, nargs="+", default=[0.2, 0.3, 0.4, 0.5])
    args = parser.parse_args()
    model = PlateDetector(open_session(str(args.model), "cpu"), args.longest)
    plain = without_plates(args.plain) if args.plain else []
    plain += known_plates(args.known) if args.known else []
    for least in args.least:
        for subset, (share, others) in (
            recall(model, args.photos, least) if args.photos else {}
        ).items():
            print(f"score {least}: {subset} recall {share:.3f}, other finds per photo {others:.2f}")
        if plain:
            false = false_finds(model, plain, least)
            print(f"score {least}: false plates per plate-free photo {false:.3f}")


if __name__ == "__main__":
    main()
