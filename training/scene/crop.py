"""One sample for the reader: a plate photographed, found more or less exactly, and straightened."""

from random import Random

import numpy as np
from PIL import Image

from ..plates.face import Face, draw_face
from . import geometry, looks
from .camera import photograph
from .light import weather
from .scenery import is_plain, part
from .shot import photographed
from .signs import draw_sign
from .visible import text_in

WIDTH, HEIGHT = 192, 64  # pixels of the reader's input
_SIGNS = 0.05  # share of samples that are no plates
_SQUEEZED = (64, 128), (20, 40)  # sizes to which crops are at times squeezed before


def straighten(photo: Image.Image, area: np.ndarray) -> Image.Image:
    """Return an area (4 x 2 pixels) of a photo as WIDTH x HEIGHT picture."""
    spans = np.hypot(*(area[[1, 3]] - area[0]).T)
    factor = max(1, int(min(spans / (WIDTH, HEIGHT))))  # large plates are averaged, not sampled
    size = (factor * WIDTH, factor * HEIGHT)
    turn = geometry.coefficients(geometry.corners(0, 0, *size), area)
    how = Image.Transform.PERSPECTIVE
    picture = photo.transform(size, how, turn, Image.Resampling.BICUBIC)
    return picture.reduce(factor) if factor > 1 else picture


def sample(fonts: dict, rng: Random, group: str = "") -> tuple[np.ndarray, str, str]:
    """Return (uint8 HEIGHT x WIDTH x 3, text, region group) of a new plate.

    The plate is one of the group, of any when empty. At times it is something that is no plate;
    text and group are empty then. The text is what can be read in the picture.
    """
    return shown(any_face(fonts, rng, group), fonts, rng)


def any_face(fonts: dict, rng: Random, group: str = "") -> Face:
    """Draw a plate of the group, or at times a sign."""
    return draw_sign(fonts, rng) if rng.random() < _SIGNS else draw_face(fonts, rng, group)


def shown(
    face: Face, fonts: dict, rng: Random, photos: tuple[str, ...] = ()
) -> tuple[np.ndarray, str, str]:
    """Return a sample of a plate or sign: a new photo of it, and one look at that.

    `photos` show no plate; they are seen around the plate, and half of the signs are parts of them.
    """
    if photos and not face.text and rng.random() < 0.5:
        return _of_nothing(photos, rng), "", ""
    look = looks.any_look(face.design.aspect < 2.4, rng)
    shot = photographed(face, fonts, rng, look=look, photos=photos)
    picture = straighten(shot.picture, shot.area)
    if rng.random() < (0.3 if face.design.group == "cn" else 0.06):
        picture = _squeezed(picture, rng)
    text = "" if is_plain(picture) else text_in(face, shot.corners, shot.area)
    return np.asarray(picture), text, face.design.group if text else ""


def _of_nothing(photos: tuple[str, ...], rng: Random) -> np.ndarray:
    view = np.asarray(part(photos, rng.uniform(0.8, 5), rng), np.float32)
    lit = Image.fromarray(np.clip(weather(view, rng), 0, 255).astype(np.uint8))
    seen = photograph(lit, rng, lit.height * 0.6)
    return np.asarray(seen.resize((WIDTH, HEIGHT), Image.Resampling.BICUBIC))


def _squeezed(picture: Image.Image, rng: Random) -> Image.Image:
    """Scale a picture down to any shape and up again, as collections of small crops do."""
    size = tuple(rng.randint(*span) for span in _SQUEEZED)
    return picture.resize(size, Image.Resampling.BILINEAR).resize(
        (WIDTH, HEIGHT), Image.Resampling.BICUBIC
    )
