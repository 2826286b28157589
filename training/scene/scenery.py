"""Photos that show no plate: what stands around drawn ones, and what a reader must not read."""

from functools import lru_cache
from pathlib import Path
from random import Random

from PIL import Image

_LONGEST = 400  # pixels kept of a photo's longer side
_SUFFIXES = (".jpg", ".jpeg", ".png")
_SHARPEST = 110  # pixels of the smallest part's width


def photos(folder: Path | None) -> tuple[str, ...]:
    """Return the photos of a folder and its subfolders; none without one.

    Raises FileNotFoundError for a folder without photos.
    """
    if folder is None:
        return ()
    found = sorted(str(p) for p in folder.rglob("*") if p.suffix.lower() in _SUFFIXES)
    if not found:
        raise FileNotFoundError(f"{folder} holds no photos: give a folder of .jpg or .png files")
    return tuple(found)


def part(files: tuple[str, ...], aspect: float, rng: Random) -> Image.Image:
    """Return a random part of a random photo, as wide as `aspect` times its height."""
    photo = _photo(rng.choice(files))
    wide = min(photo.width, photo.height * aspect) * rng.uniform(0.15, 1.0) ** 0.7
    wide = max(wide, min(_SHARPEST, photo.width, photo.height * aspect))
    high = wide / aspect
    left, top = rng.uniform(0, photo.width - wide), rng.uniform(0, photo.height - high)
    size = (max(8, round(wide)), max(8, round(high)))
    shown = photo.resize(size, Image.Resampling.NEAREST, (left, top, left + wide, top + high))
    return shown.transpose(Image.Transpose.FLIP_LEFT_RIGHT) if rng.random() < 0.5 else shown


def is_plain(picture: Image.Image) -> bool:
    """Tell whether light or dark has left nothing to see."""
    dark, light = picture.convert("L").resize((48, 16), Image.Resampling.BOX).getextrema()
    return light - dark < 8


@lru_cache(maxsize=320)
def _photo(file: str) -> Image.Image:
    photo = Image.open(file)
    photo.draft("RGB", (_LONGEST, _LONGEST))
    photo = photo.convert("RGB")
    photo.thumbnail((_LONGEST, _LONGEST))
    return photo
