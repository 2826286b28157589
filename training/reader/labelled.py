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
from ..scene.crop import HEIGHT, WIDTH, shown


@dataclass(frozen=True)
class Labelled:
    """A picture (H x W x 3 uint8), a plate's corners on it, its text, the set it belongs to."""

    picture: np.ndarray
    corners: np.ndarray
    text: str
    subset: str


def real(folder: Path) -> Iterator[Labelled]:
    """Yield the plates of FOLDER/plates.csv, with their boxes' corners."""
    with open(folder / "plates.csv", encoding="utf-8") as file:
        for row in csv.DictReader(file):
            x, y, wide, high = (float(row[key]) for key in ("x", "y", "width", "height"))
            corners = geometry.corners(x, y, x + wide, y + high)
            photo = ImageOps.exif_transpose(Image.open(folder / row["file"])).convert("RGB")
            subset = row["file"].split("/")[0]
            yield Labelled(np.asarray(photo), corners, row["text"], subset)


def rendered(fonts: dict, count: int, seed: int) -> Iterator[Labelled]:
    """Yield rendered plates that no training with another seed sees."""
    for number in range(count):
        rng = Random(f"measure {seed}:{number}")
        picture, text, group = shown(draw_face(fonts, rng), fonts, rng)
        yield Labelled(picture, geometry.corners(0, 0, WIDTH, HEIGHT), text, group)
