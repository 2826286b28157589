"""Rendered test sets: pictures of one group's plates that a person can read, and what they say.

    python -m training.reader.testset --fonts FONTS --group kr --out FOLDER --count 300

Writes FOLDER/GROUP/NUMBER.jpg and FOLDER/plates.csv (file,x,y,width,height,text), to be measured as
photos are; a seed gives the same pictures again. A person can read a picture where each character
of the text
- is at least 9 pixels high, small ones of an upper row at least 7, and whole on the picture,
- stands out from its ground: its grey spreads by at least 6 levels (standard deviation),
- looks as it was drawn: photographed and drawn, its grey levels correlate by at least 0.75.
"""

import argparse
import csv
from pathlib import Path
from random import Random

import numpy as np
from PIL import Image

from ..fonts import catalogue
from ..plates.catalogue import NAMES
from ..plates.face import draw_face
from ..plates.lettering import Mark
from ..scene import geometry, looks
from ..scene.scenery import photos
from ..scene.shot import Shot, photographed
from ..scene.visible import text_in

_LEAST, _LEAST_MINOR = 9.0, 7.0  # pixels of a character's height
_SPREAD = 6.0  # grey levels
_ALIKE = 0.75
_FLAT = 64  # pixels of a straightened plate's height
_AROUND = 0.4  # of the plate's box, on each side
_COLUMNS = ("file", "x", "y", "width", "height", "text")


def readable(fonts: dict, group: str, rng: Random, scenery: tuple[str, ...] = ()):
    """Return (shot, text) of the next plate that a person can read."""
    while True:
        shot = photographed(draw_face(fonts, rng, group), fonts, rng, look=_wide, photos=scenery)
        text = text_in(shot.face, shot.corners, shot.area)
        if text and can_be_read(shot, text):
            return shot, text


def can_be_read(shot: Shot, text: str) -> bool:
    """Tell whether a person can read the text of a photo, by the rule above."""
    minor = text == shot.face.text  # else the small ones are not asked for
    marks = [mark for mark in shot.face.marks if minor or not mark.minor]
    wide = round(_FLAT * shot.face.picture.width / shot.face.picture.height)
    turn = geometry.coefficients(geometry.corners(0, 0, wide, _FLAT), shot.corners)
    how = Image.Transform.PERSPECTIVE
    seen = shot.picture.transform((wide, _FLAT), how, turn, Image.Resampling.BICUBIC)
    drawn = shot.face.picture.resize((wide, _FLAT), Image.Resampling.BOX)
    greys = [np.asarray(picture.convert("L"), np.float32) for picture in (seen, drawn)]
    scale = _FLAT / shot.face.picture.height
    return all(_is_high(mark, shot) and _is_clear(mark, scale, *greys) for mark in marks)


def _is_high(mark: Mark, shot: Shot) -> bool:
    flat = geometry.corners(0, 0, *shot.face.picture.size)
    quad = geometry.project(geometry.homography(flat, shot.corners), geometry.corners(*mark.box))
    heights = np.hypot(*(quad[[3, 2]] - quad[[0, 1]]).T)
    return float(heights.mean()) >= (_LEAST_MINOR if mark.minor else _LEAST)


def _is_clear(mark: Mark, scale: float, seen: np.ndarray, drawn: np.ndarray) -> bool:
    left, top, right, bottom = (round(side * scale) for side in mark.box)
    rows, columns = slice(max(0, top - 2), bottom + 2), slice(max(0, left - 2), right + 2)
    one, other = seen[rows, columns], drawn[rows, columns]
    if min(one.std(), other.std()) < _SPREAD:
        return False
    return float(np.corrcoef(one.ravel(), other.ravel())[0, 1]) >= _ALIKE


def _wide(quad: np.ndarray, _: Random) -> np.ndarray:
    return looks.grown(looks.upright(quad), (_AROUND,) * 4)


def write(args: argparse.Namespace) -> list[list]:
    """Write the pictures, and return the rows of their table."""
    fonts, scenery = catalogue(args.fonts, args.korean_glyphs), photos(args.scenery)
    (args.out / args.group).mkdir(parents=True, exist_ok=True)
    rows = []
    for number in range(args.count):
        shot, text = readable(
            fonts, args.group, Random(f"test {args.group} {args.seed}:{number}"), scenery
        )
        name = f"{args.group}/{number:05}.jpg"
        shot.picture.save(args.out / name, "JPEG", quality=95)
        low, high = shot.corners.min(axis=0), shot.corners.max(axis=0)
        rows.append([name, *np.round([*low, *(high - low)]).astype(int).tolist(), text])
    return rows


def add_to_table(table: Path, group: str, rows: list[list]) -> None:
    """Write the rows into a table that may hold other groups, instead of the group's old ones."""
    kept = []
    if table.exists():
        with open(table, encoding="utf-8", newline="") as file:
            kept = [row for row in list(csv.reader(file))[1:] if row[0].split("/")[0] != group]
    with open(table, "w", encoding="utf-8", newline="") as file:
        csv.writer(file).writerows([_COLUMNS, *kept, *rows])


def arguments() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--fonts", type=Path, required=True)
    parser.add_argument("--korean-glyphs", type=Path, help="folder of official drawings")
    parser.add_argument("--scenery", type=Path, help="folder of photos that show no plate")
    parser.add_argument("--group", required=True, choices=NAMES)
    parser.add_argument("--count", type=int, default=300)
    parser.add_argument("--seed", type=int, default=0)
    parser.add_argument("--out", type=Path, required=True)
    return parser


def main() -> None:
    args = arguments().parse_args()
    add_to_table(args.out / "plates.csv", args.group, write(args))
    print(f"{args.count} pictures are in {args.out / args.group}")


if __name__ == "__main__":
    main()
