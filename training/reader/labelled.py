"""Labelled plates for measuring the reader: real ones of a folder, or freshly rendered ones."""

import csv
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path
from random import Random

import numpy as np
from PIL import Image, ImageOps

from ..plates.face import draw_face
from ..scene import geometry
from ..scene.crop import shown, straighten


@dataclass(frozen=True)
class Labelled:
    """A straightened picture (uint8 HEIGHT x WIDTH x 3), its text, the set it belongs to."""

    picture: np.ndarray
    text: str
    subset: str


def real(folder: Path, margin: float = 0.03) -> Iterator[Labelled]:
    """Yield the plates of FOLDER/plates.csv, cut by their boxes and a margin (share of a side)."""
    with open(folder / "plates.csv", encoding="utf-8") as file:
        for row in csv.DictReader(file):
            x, y, wide, high = (float(row[key]) for key in ("x", "y", "width", "height"))
            dx, dy = margin * wide, margin * high
            corners = geometry.corners(x - dx, y - dy, x + wide + dx, y + high + dy)
            photo = ImageOps.exif_transpose(Image.open(folder / row["file"])).convert("RGB")
            picture = _cut(photo, corners)
            yield Labelled(picture, row["text"], row["file"].split("/")[0])


def _cut(photo: Image.Image, corners: np.ndarray) -> np.ndarray:
    return np.asarray(straighten(photo, corners))


def rendered(fonts: dict, count: int, seed: int) -> Iterator[Labelled]:
    """Yield rendered plates that no training with another seed sees."""
    for number in range(count):
        rng = Random(f"measure {seed}:{number}")
        picture, text, group = shown(draw_face(fonts, rng), fonts, rng)
        yield Labelled(picture, text, group)
