"""Photos whose plates' places are known: training exchanges those plates for rendered ones."""

import csv
from dataclasses import dataclass
from pathlib import Path
from random import Random

import numpy as np
from PIL import Image

_LEAST = (10, 4)  # pixels of a plate that can still be told from its surroundings


@dataclass(frozen=True)
class Known:
    """A photo file and its plates' boxes: N x 4, left, top, right, bottom in pixels."""

    file: Path
    boxes: np.ndarray


def known_plates(table: Path) -> list[Known]:
    """Read a table with file, left, top, right, bottom; the files lie beside it."""
    boxes: dict[str, list[list[float]]] = {}
    with open(table, encoding="utf-8") as file:
        for row in csv.DictReader(file):
            sides = [float(row[side]) for side in ("left", "top", "right", "bottom")]
            boxes.setdefault(row["file"], []).append(sides)
    return [Known(table.parent / name, np.array(found)) for name, found in boxes.items()]


def without_plates(folder: Path) -> list[Known]:
    """Return the photos of a folder on which no plate is."""
    files = [f for f in sorted(folder.rglob("*")) if f.suffix.lower() in (".jpg", ".jpeg", ".png")]
    return [Known(file, np.zeros((0, 4))) for file in files]


def view(photo: Known, size: int, scales: tuple[float, float], rng: Random):
    """Return (a square part of a photo, `size` pixels wide, the boxes of the plates on it).

    Plates that are cut off or too small to tell are painted over: they would teach nothing.
    """
    picture = Image.open(photo.file)
    low, high = scales
    scale = low * (high / low) ** rng.random()
    picture.draft("RGB", (round(picture.width * scale), round(picture.height * scale)))
    ratio = picture.width / Image.open(photo.file).width
    picture, boxes, scale = picture.convert("RGB"), photo.boxes * ratio, scale / ratio
    side = size / scale
    left, top = _corner(picture.size, boxes, side, rng)
    part = picture.transform(
        (size, size), Image.Transform.EXTENT, (left, top, left + side, top + side),
        Image.Resampling.BILINEAR, fillcolor=(110, 112, 116),
    )  # fmt: skip
    return _kept(part, (boxes - [left, top, left, top]) * scale)


def _corner(size: tuple[int, int], boxes: np.ndarray, side: float, rng: Random):
    """Return the upper left corner of a square, mostly one that shows a plate."""
    if len(boxes) and rng.random() < 0.6:
        left, top, right, bottom = boxes[rng.randrange(len(boxes))]
        x, y = (left + right) / 2 - side * rng.random(), (top + bottom) / 2 - side * rng.random()
    else:
        x, y = (length - side for length in size)
        x, y = x * rng.random(), y * rng.random()
    limits = [max(0.0, length - side) for length in size]
    return min(max(0.0, x), limits[0]), min(max(0.0, y), limits[1])


def _kept(part: Image.Image, boxes: np.ndarray) -> tuple[Image.Image, np.ndarray]:
    whole = np.clip(boxes, 0, part.width)
    areas = [np.prod(np.maximum(b[:, 2:] - b[:, :2], 0), axis=1) for b in (boxes, whole)]
    seen = areas[1] > 0
    large = ((whole[:, 2:] - whole[:, :2]) >= _LEAST).all(axis=1)
    good = seen & large & (areas[1] > 0.8 * areas[0])
    for box in whole[seen & ~good]:
        erase(part, box)
    return part, whole[good]


def erase(part: Image.Image, box: np.ndarray) -> None:
    """Paint over a box with what is above and below it."""
    left, top, right, bottom = (round(float(side)) for side in box)
    wide, high = max(2, right - left), max(2, bottom - top)
    rows = [min(max(y, 0), part.height - 1) for y in (top - 2, bottom + 2)]
    strips = Image.new("RGB", (wide, 2))
    for i, y in enumerate(rows):
        strips.paste(part.crop((left, y, left + wide, y + 1)), (0, i))
    part.paste(strips.resize((wide, high), Image.Resampling.BILINEAR), (left, top))
