"""One sample for the reader: a plate photographed, found more or less exactly, and straightened."""

from dataclasses import dataclass
from random import Random

import numpy as np
from PIL import Image

from ..plates.face import Face, draw_face
from . import geometry, looks
from .camera import photograph
from .light import weather
from .mounting import mount
from .scenery import is_plain, part
from .signs import draw_sign
from .visible import text_in

WIDTH, HEIGHT = 192, 64  # pixels of the reader's input
_DETAIL = (10, 72)  # heights of a plate on the photo in pixels
_SIGNS = 0.05  # share of samples that are no plates
_AROUND = (0.5, 0.9)  # car around the plate, as shares of its width and its height
_REAL = 0.5  # share of plates with a photo around, where there are some
_SQUEEZED = (64, 128), (20, 40)  # sizes to which crops are at times squeezed before


@dataclass
class Shot:
    """A photographed plate: RGB picture, the plate's corners (4 x 2, pixels), what it says."""

    picture: Image.Image
    corners: np.ndarray
    face: Face


def shoot(fonts: dict, rng: Random, group: str = "", detail: float = 0) -> Shot:
    """Photograph a new plate, `detail` pixels high (any height when 0), with a little around it."""
    return photographed(draw_face(fonts, rng, group), fonts, rng, detail)


def photographed(
    face: Face, fonts: dict, rng: Random, detail: float = 0, photos: tuple[str, ...] = ()
) -> Shot:
    """Photograph a plate or a sign, with a car or a part of one of the photos around it."""
    real = photos and rng.random() < _REAL
    scene, box = mount(face, fonts, rng, part(photos, 2.5, rng) if real else None, _AROUND)
    detail = detail or _any_detail(rng, face)
    plate = geometry.corners(*box)
    flat = geometry.corners(0, 0, *scene.size)
    matrix = geometry.homography(
        flat, geometry.tilted(flat, geometry.any_tilt(rng), rng.uniform(1.6, 6))
    )
    return _taken(scene, matrix, plate, detail, face, rng)


def _taken(scene, matrix: np.ndarray, plate: np.ndarray, detail: float, face: Face, rng: Random):
    seen = geometry.project(matrix, plate)
    heights = np.hypot(*(seen[[3, 2]] - seen[[0, 1]]).T)
    scale = detail / max(float(heights.mean()), 1)
    low = seen.min(axis=0) - looks.ROOM * np.ptp(seen, axis=0) - 2 / scale
    size = np.ceil((np.ptp(seen, axis=0) * (1 + 2 * looks.ROOM) + 4 / scale) * scale).astype(int)
    size = np.clip(size, 10, 720)
    shown = (seen - low) * scale
    if scale < 0.6:
        scene, plate = _reduced(scene, plate, scale)
    turn = geometry.coefficients(shown, plate)
    how = Image.Transform.PERSPECTIVE
    beyond = (rng.randint(10, 160),) * 3
    picture = scene.transform(
        tuple(map(int, size)), how, turn, Image.Resampling.BICUBIC, fillcolor=beyond
    )
    lit = weather(np.asarray(picture, np.float32), rng)
    picture = Image.fromarray(np.clip(lit, 0, 255).astype(np.uint8))
    return Shot(photograph(picture, rng, detail), shown, face)


def _reduced(scene: Image.Image, plate: np.ndarray, scale: float):
    """Shrink the scene first, since the transformation alone would alias."""
    factor = min(1.0, scale * 1.25)
    size = (max(8, round(scene.width * factor)), max(8, round(scene.height * factor)))
    ratio = np.array(size) / np.array(scene.size)
    return scene.resize(size, Image.Resampling.BOX), plate * ratio


def _any_detail(rng: Random, face: Face) -> float:
    low, high = _DETAIL
    rows = 1.5 if face.design.aspect < 2.4 else 1.0  # taller plates show more pixels
    return rows * low * (high / low) ** rng.random() * (1.6 if rng.random() < 0.1 else 1.0)


def straighten(shot: Shot, area: np.ndarray | None = None) -> Image.Image:
    """Return the area of a photo, the plate itself when None, as WIDTH x HEIGHT picture."""
    area = shot.corners if area is None else area
    spans = np.hypot(*(area[[1, 3]] - area[0]).T)
    factor = max(1, int(min(spans / (WIDTH, HEIGHT))))  # large plates are averaged, not sampled
    size = (factor * WIDTH, factor * HEIGHT)
    turn = geometry.coefficients(geometry.corners(0, 0, *size), area)
    how = Image.Transform.PERSPECTIVE
    picture = shot.picture.transform(size, how, turn, Image.Resampling.BICUBIC)
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
    shot = photographed(face, fonts, rng, photos=photos)
    area = looks.any_look(shot.corners, face.design.aspect < 2.4, rng)
    picture = straighten(shot, area)
    if rng.random() < (0.3 if face.design.group == "cn" else 0.06):
        picture = _squeezed(picture, rng)
    pixels = np.asarray(picture)
    text = "" if is_plain(pixels) else text_in(face, shot.corners, area)
    return pixels, text, face.design.group if text else ""


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
