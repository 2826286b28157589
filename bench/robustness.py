"""Measures the engine on labelled photos that are cropped, shrunk, turned, blurred and darkened.

Usage: python bench/robustness.py PHOTOS [--detector-model NAME] [--ocr-model NAME]
       [--region REGION] [--sets eu,us] [--changes half,crop20]

PHOTOS is a folder as bench/accuracy.py takes it, with boxes. A plate counts as read when a result
whose middle lies in its box has its text, O=0 and I=1 folded. Prints a Markdown table: a row for
each change, a column for each set.
"""

import argparse
import io
from collections import defaultdict
from collections.abc import Callable
from pathlib import Path
from random import Random

import numpy as np
from accuracy import FOLDED, Label, read_labels
from PIL import Image, ImageFilter
from zelvoran_anpr import zv_anpr_detector_v17, zv_anpr_ocr_v17
from zelvoran_anpr.reading import load_image, read_plates

Box = tuple[float, float, float, float]
Change = Callable[[Image.Image, Box, Random], tuple[Image.Image, Box]]


def unchanged(photo: Image.Image, box: Box, rng: Random) -> tuple[Image.Image, Box]:
    return photo, box


def crop(border: float) -> Change:
    """Cut the plate out with `border` of its sides around it."""

    def change(photo: Image.Image, box: Box, rng: Random) -> tuple[Image.Image, Box]:
        dx, dy = border * (box[2] - box[0]), border * (box[3] - box[1])
        left, top = max(0, round(box[0] - dx)), max(0, round(box[1] - dy))
        right, bottom = min(photo.width, round(box[2] + dx)), min(photo.height, round(box[3] + dy))
        cut = photo.crop((left, top, right, bottom))
        return cut, (box[0] - left, box[1] - top, box[2] - left, box[3] - top)

    return change


def scaled(share: float) -> Change:
    def change(photo: Image.Image, box: Box, rng: Random) -> tuple[Image.Image, Box]:
        size = (max(1, round(photo.width * share)), max(1, round(photo.height * share)))
        return photo.resize(size, Image.Resampling.BOX), tuple(side * share for side in box)

    return change


def turned(degrees: float) -> Change:
    """Turn the photo about the plate's middle; it keeps its size."""

    def change(photo: Image.Image, box: Box, rng: Random) -> tuple[Image.Image, Box]:
        angle = degrees * rng.choice((-1, 1))
        middle = ((box[0] + box[2]) / 2, (box[1] + box[3]) / 2)
        picture = photo.rotate(angle, Image.Resampling.BICUBIC, center=middle, fillcolor=(90,) * 3)
        return picture, _turned_box(box, middle, np.radians(angle))

    return change


def _turned_box(box: Box, middle: tuple[float, float], angle: float) -> Box:
    wide, high = box[2] - box[0], box[3] - box[1]
    x = (abs(np.cos(angle)) * wide + abs(np.sin(angle)) * high) / 2
    y = (abs(np.sin(angle)) * wide + abs(np.cos(angle)) * high) / 2
    return middle[0] - x, middle[1] - y, middle[0] + x, middle[1] + y


def moved(share: float) -> Change:
    """Blur along a line as long as `share` of the plate's height."""

    def change(photo: Image.Image, box: Box, rng: Random) -> tuple[Image.Image, Box]:
        steps = max(1, round(share * (box[3] - box[1])))
        pixels = np.asarray(photo, np.float32)
        total = sum(np.roll(pixels, i, axis=1) for i in range(steps + 1))
        return Image.fromarray((total / (steps + 1)).astype(np.uint8)), box

    return change


def blurred(share: float) -> Change:
    """Blur with a Gaussian whose deviation is `share` of the plate's height."""
    return lambda photo, box, rng: (
        photo.filter(ImageFilter.GaussianBlur(share * (box[3] - box[1]))),
        box,
    )


def night(gamma: float, sigma: float) -> Change:
    def change(photo: Image.Image, box: Box, rng: Random) -> tuple[Image.Image, Box]:
        dice = np.random.default_rng(rng.getrandbits(32))
        pixels = 255 * (np.asarray(photo, np.float32) / 255) ** gamma
        pixels += sigma * dice.standard_normal(pixels.shape, np.float32)
        return Image.fromarray(np.clip(pixels, 0, 255).astype(np.uint8)), box

    return change


def compressed(quality: int) -> Change:
    def change(photo: Image.Image, box: Box, rng: Random) -> tuple[Image.Image, Box]:
        file = io.BytesIO()
        photo.save(file, "JPEG", quality=quality)
        return Image.open(file).convert("RGB"), box

    return change


CHANGES: dict[str, Change] = {
    "none": unchanged,
    "crop0": crop(0.0), "crop10": crop(0.1), "crop20": crop(0.2), "crop30": crop(0.3),
    "half": scaled(1 / 2), "third": scaled(1 / 3), "quarter": scaled(1 / 4),
    "turn10": turned(10), "turn20": turned(20), "turn30": turned(30),
    "motion0.1": moved(0.1), "motion0.2": moved(0.2),
    "gauss0.05": blurred(0.05), "gauss0.1": blurred(0.1),
    "night": night(4, 4), "jpeg10": compressed(10), "jpeg5": compressed(5),
}  # fmt: skip


def main() -> None:
    options = parse_options()
    labels = read_labels(options.photos / "plates.csv", options.sets)
    engine = (
        zv_anpr_detector_v17(options.detector_model),
        zv_anpr_ocr_v17(options.ocr_model, options.region),
    )
    names = options.changes.split(",") if options.changes else list(CHANGES)
    hits: dict[tuple[str, str], list[bool]] = defaultdict(list)
    for file, expected in labels.items():
        photo = Image.fromarray(load_image(options.photos / file))
        for name in names:
            read = [is_read(engine, photo, label, name, file) for label in expected]
            hits[name, file.split("/")[0]] += read
    print_table(names, sorted({subset for _, subset in hits}), hits)


def parse_options() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("photos", type=Path, help="folder with plates.csv")
    parser.add_argument("--detector-model", default="640p_fp32")
    parser.add_argument("--ocr-model", default="fp32")
    parser.add_argument("--region", default="univ")
    parser.add_argument("--sets", help="comma-separated folders, default: all")
    parser.add_argument("--changes", help=f"comma-separated, default: {','.join(CHANGES)}")
    return parser.parse_args()


def is_read(engine: tuple, photo: Image.Image, label: Label, name: str, file: str) -> bool:
    changed, box = CHANGES[name](photo, label.box, Random(f"{name} {file}"))
    results = read_plates(*engine, np.asarray(changed))["results"]
    wanted = label.text.translate(FOLDED)
    return any(_is_in(r["ltrb"], box) and r["ocr"].translate(FOLDED) == wanted for r in results)


def _is_in(inner: list[int], box: Box) -> bool:
    x, y = (inner[0] + inner[2]) / 2, (inner[1] + inner[3]) / 2
    return box[0] <= x <= box[2] and box[1] <= y <= box[3]


def print_table(names: list[str], sets: list[str], hits: dict) -> None:
    print("| change |", " | ".join(sets), "|")
    print("|---|" + "---:|" * len(sets))
    for name in names:
        shares = [f"{100 * np.mean(hits[name, subset]):.1f} %" for subset in sets]
        print(f"| {name} |", " | ".join(shares), "|")


if __name__ == "__main__":
    main()
