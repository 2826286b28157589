"""One sample for the reader: a plate photographed, found not quite exactly, and straightened."""

from dataclasses import dataclass
from random import Random

import numpy as np
from PIL import Image

from ..plates.face import Face, draw_face
from . import geometry
from .camera import photograph
from .light import weather
from .mounting import mount
from .signs import draw_sign

WIDTH, HEIGHT = 192, 64  # pixels of the reader's input
_DETAIL = (12, 64)  # heights of a plate on the photo in pixels

_SIGNS = 0.04  # share of samples that are no plates


@dataclass
class Shot:
    """A photographed plate: RGB picture, the plate's corners (4 x 2, pixels), what it says."""

    picture: Image.Image
    corners: np.ndarray
    face: Face


def shoot(fonts: dict, rng: Random, group: str = "", detail: float = 0) -> Shot:
    """Photograph a new plate, `detail` pixels high (any height when 0), with a little around it."""
    return photographed(draw_face(fonts, rng, group), fonts, rng, detail)


def photographed(face: Face, fonts: dict, rng: Random, detail: float = 0) -> Shot:
    """Photograph a plate or a sign, with a little around it."""
    scene, box = mount(face, fonts, rng)
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
    low = seen.min(axis=0) - 0.16 * np.ptp(seen, axis=0) - 2 / scale
    size = np.ceil((np.ptp(seen, axis=0) * 1.32 + 4 / scale) * scale).astype(int)
    size = np.clip(size, 10, 480)
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
    return rows * low * (high / low) ** rng.random() ** 0.8 * (1.6 if rng.random() < 0.1 else 1.0)


def straighten(shot: Shot, rng: Random | None = None) -> Image.Image:
    """Return the plate as WIDTH x HEIGHT picture; with `rng` as a detector finds it."""
    area = shot.corners if rng is None else _inexact(shot.corners, rng)
    spans = np.hypot(*(area[[1, 3]] - area[0]).T)
    factor = max(1, int(min(spans / (WIDTH, HEIGHT))))  # large plates are averaged, not sampled
    size = (factor * WIDTH, factor * HEIGHT)
    turn = geometry.coefficients(geometry.corners(0, 0, *size), area)
    how = Image.Transform.PERSPECTIVE
    picture = shot.picture.transform(size, how, turn, Image.Resampling.BICUBIC)
    return picture.reduce(factor) if factor > 1 else picture


def _inexact(quad: np.ndarray, rng: Random) -> np.ndarray:
    """Shift, stretch and turn a quad; at times take the upright box around it."""
    if rng.random() < 0.12:
        (left, top), (right, bottom) = quad.min(axis=0), quad.max(axis=0)
        quad = geometry.corners(left, top, right, bottom)
    along, down = quad[1] - quad[0], quad[3] - quad[0]
    jitter = rng.choice((0.01, 0.025, 0.05))
    moved = quad + [
        rng.gauss(0, jitter * 0.4) * along + rng.gauss(0, jitter) * down for _ in range(4)
    ]
    x, y = rng.gauss(0.02, 0.025), rng.gauss(0.035, 0.045)
    grow = [(-x, -y), (x, -y), (x, y), (-x, y)]
    return moved + [a * along + b * down for a, b in grow]


def sample(fonts: dict, rng: Random, group: str = "") -> tuple[np.ndarray, str, str]:
    """Return (uint8 HEIGHT x WIDTH x 3, text, region group) of a new plate.

    The plate is one of the group, of any when empty. At times it is something that is no plate;
    text and group are empty then.
    """
    sign = rng.random() < _SIGNS
    shot = photographed(draw_sign(fonts, rng), fonts, rng) if sign else shoot(fonts, rng, group)
    return np.asarray(straighten(shot, rng)), shot.face.text, shot.face.design.group
