"""Packs what training needs into a small folder, for a machine that can fetch nothing.

    python -m training.pack --fonts fonts/fonts --known KNOWN.csv --out pack

Fonts keep only the characters in use (89 MB become 2), photos are scaled down. Train there
with --fonts pack/fonts --known pack/photos/known.csv.
"""

import argparse
import csv
import logging
from pathlib import Path

import numpy as np
from PIL import Image

from .alphabet import CHARACTERS
from .detector.photos import Known, known_plates
from .fonts import catalogue
from .plates.catalogue import ALL
from .plates.text import OTHER_SCRIPTS

_ASCII = "".join(map(chr, range(32, 127)))
_MEASURES = "国를"  # what glyphs of other scripts are measured by
_QUALITY = 82


def characters_in_use() -> str:
    """Return every character that a plate or a sign may show."""
    captions = "".join("".join(design.header + design.footer) for design in ALL)
    accents = "ČĆŠŽÁÉÍÓÚÀÈÜÖÄÑÇãçéíóúčšž"
    words = "".join("".join(design.words) for design in ALL) + OTHER_SCRIPTS
    return "".join(sorted(set(CHARACTERS + _ASCII + _MEASURES + captions + accents + words)))


def pack_fonts(fonts: Path, out: Path) -> None:
    """Write every font in use, with only the characters in use."""
    from fontTools import subset

    out.mkdir(parents=True, exist_ok=True)
    options = subset.Options(
        layout_features=["kern"], legacy_kern=True, hinting=True, notdef_outline=True,
        font_number=0, ignore_missing_glyphs=True, passthrough_tables=False,
    )  # fmt: skip
    logging.getLogger("fontTools").setLevel(logging.ERROR)
    for file in sorted({Path(file) for found in catalogue(fonts).values() for file in found}):
        font = subset.load_font(str(file), options)
        chooser = subset.Subsetter(options)
        chooser.populate(text=characters_in_use())
        chooser.subset(font)
        suffix = ".otf" if font.sfntVersion == "OTTO" else ".ttf"
        subset.save_font(font, str(out / (file.stem + suffix)), options)


def pack_photos(photos: list[Known], out: Path, longest: int) -> None:
    """Write the photos, their longer side `longest` pixels at most, and their table."""
    out.mkdir(parents=True, exist_ok=True)
    rows = []
    for number, photo in enumerate(photos):
        name = f"{number:05}.jpg"
        picture = Image.open(photo.file).convert("RGB")
        scale = min(1.0, longest / max(picture.size))
        size = tuple(round(side * scale) for side in picture.size)
        small = picture.resize(size, Image.Resampling.LANCZOS)
        small.save(out / name, "JPEG", quality=_QUALITY)
        rows += [[name, *np.round(box * scale, 1).tolist()] for box in photo.boxes]
    with open(out / "known.csv", "w", newline="", encoding="utf-8") as file:
        csv.writer(file).writerows([["file", "left", "top", "right", "bottom"], *rows])


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--fonts", type=Path, required=True)
    parser.add_argument("--known", type=Path)
    parser.add_argument("--longest", type=int, default=1024, help="pixels")
    parser.add_argument("--out", type=Path, required=True)
    args = parser.parse_args()
    pack_fonts(args.fonts, args.out / "fonts")
    if args.known:
        pack_photos(known_plates(args.known), args.out / "photos", args.longest)
    total = sum(file.stat().st_size for file in args.out.rglob("*") if file.is_file())
    print(f"{args.out} {total / 1e6:.1f} MB")


if __name__ == "__main__":
    main()
