"""Lays real and rendered plates side by side, so that a person sees what the generator lacks.

    python -m training.contact_sheet --fonts FONTS --photos FOLDER --set us --out sheet.png

FOLDER holds photos and plates.csv (file,x,y,width,height,text). Without it all are rendered.
"""

import argparse
import csv
from pathlib import Path
from random import Random

from PIL import Image

from .fonts import catalogue
from .scene.crop import sample
from .scene.shot import shoot

CELL = (200, 100)  # pixels
ROWS, COLUMNS = 10, 4  # of each half
_GROUPS = {"us": "na", "br": "sa", "eu": "eup"}


def real_crops(folder: Path, subset: str, rng: Random, count: int) -> list[Image.Image]:
    """Return labelled plates of a set, with a little around them."""
    with open(folder / "plates.csv", encoding="utf-8") as file:
        rows = [r for r in csv.DictReader(file) if r["file"].startswith(subset)]
    rng.shuffle(rows)
    return [_cut(folder, row) for row in rows[:count]]


def _cut(folder: Path, row: dict) -> Image.Image:
    x, y, wide, high = (int(row[key]) for key in ("x", "y", "width", "height"))
    photo = Image.open(folder / row["file"]).convert("RGB")
    return photo.crop((x - wide // 10, y - high // 8, x + wide + wide // 10, y + high + high // 8))


def rendered_crops(fonts: dict, group: str, rng: Random, heights: list[int], straight: bool):
    """Return rendered plates of the group, as high on their photos as the given heights."""
    if straight:
        return [Image.fromarray(sample(fonts, rng, group)[0]) for _ in heights]
    shots = [shoot(fonts, rng, group, height) for height in heights]
    return [shot.picture for shot in shots]


def sheet(halves: list[list[Image.Image]]) -> Image.Image:
    """Return one picture with each half in COLUMNS columns, a gap between them."""
    width = len(halves) * COLUMNS * CELL[0] + 40 * (len(halves) - 1)
    page = Image.new("RGB", (width, ROWS * CELL[1]), (255, 0, 255))
    for half, crops in enumerate(halves):
        for i, crop in enumerate(crops[: ROWS * COLUMNS]):
            scale = min((CELL[0] - 4) / crop.width, (CELL[1] - 4) / crop.height)
            shown = crop.resize((max(1, int(crop.width * scale)), max(1, int(crop.height * scale))))
            x = half * (COLUMNS * CELL[0] + 40) + i % COLUMNS * CELL[0]
            page.paste(shown, (x, i // COLUMNS * CELL[1]))
    return page


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--fonts", type=Path, required=True)
    parser.add_argument("--photos", type=Path)
    parser.add_argument("--set", default="", help="first part of the file names, as us")
    parser.add_argument("--group", default="", help="region group or set of designs to render")
    parser.add_argument("--korean-glyphs", type=Path, help="folder of official drawings")
    parser.add_argument("--straight", action="store_true", help="show the reader's input")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--out", type=Path, required=True)
    args = parser.parse_args()
    rng = Random(args.seed)
    count = ROWS * COLUMNS
    real = real_crops(args.photos, args.set, rng, count) if args.photos else []
    heights = [round(crop.height / 1.25) for crop in real] or [0] * count
    fonts = catalogue(args.fonts, args.korean_glyphs)
    group = args.group or _GROUPS.get(args.set, "")
    rendered = rendered_crops(fonts, group, rng, heights, args.straight)
    sheet([half for half in (real, rendered) if half]).save(args.out)


if __name__ == "__main__":
    main()
