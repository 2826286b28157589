"""A photo of a plate: mounted, seen from somewhere, lit, taken by a camera."""

from dataclasses import dataclass
from random import Random

import numpy as np
from PIL import Image

from ..plates.face import Face, draw_face
from . import geometry, looks
from .camera import photograph
from .light import weather
from .mounting import MARGIN, mount
from .scenery import part

_DETAIL = (10, 72)  # heights of a plate on the photo in pixels
_AROUND = (0.5, 0.9)  # car around a plate that a wide look sees: shares of its width and height
_REAL = 0.5  # share of plates with a photo around, where there are some
_LARGEST = 720  # pixels of a photo's side


@dataclass
class Shot:
    """A photographed plate: RGB picture, the plate's corners (4 x 2, pixels), what it says.

    `area` (4 x 2) is what a look takes of it.
    """

    picture: Image.Image
    corners: np.ndarray
    face: Face
    area: np.ndarray


def shoot(fonts: dict, rng: Random, group: str = "", detail: float = 0) -> Shot:
    """Photograph a new plate, `detail` pixels high (any height when 0), with a little around it."""
    return photographed(draw_face(fonts, rng, group), fonts, rng, detail)


def photographed(
    face: Face,
    fonts: dict,
    rng: Random,
    detail: float = 0,
    look: looks.Look = looks.near,
    photos: tuple[str, ...] = (),
) -> Shot:
    """Photograph a plate or a sign as far as the look sees, on a car or on one of the photos."""
    real = part(photos, 2.5, rng) if photos and rng.random() < _REAL else None
    around = MARGIN if look in (looks.near, looks.found) else _AROUND
    scene, box = mount(face, fonts, rng, real, around)
    flat = geometry.corners(0, 0, *scene.size)
    tilted = geometry.tilted(flat, geometry.any_tilt(rng), rng.uniform(1.6, 6))
    plate = geometry.corners(*box)
    seen = geometry.project(geometry.homography(flat, tilted), plate)
    detail = detail or _any_detail(rng, face)
    heights = np.hypot(*(seen[[3, 2]] - seen[[0, 1]]).T)
    scale = detail / max(float(heights.mean()), 1)
    shot = _view(face, seen * scale, look, rng)
    shot.picture = photograph(_taken(scene, plate, shot, scale, rng), rng, detail)
    return shot


def _view(face: Face, seen: np.ndarray, look: looks.Look, rng: Random) -> Shot:
    """Return a shot without its picture, only as large as the look needs."""
    area = look(seen, rng)
    both = np.concatenate([seen, area])
    low = both.min(axis=0) - 3
    size = np.clip(np.ceil(both.max(axis=0) + 3 - low), 10, _LARGEST).astype(int)
    return Shot(Image.new("RGB", tuple(map(int, size))), seen - low, face, area - low)


def _taken(
    scene: Image.Image, plate: np.ndarray, shot: Shot, scale: float, rng: Random
) -> Image.Image:
    """Return the scene with the plate at the shot's corners, in some light."""
    if scale < 0.6:
        scene, plate = _reduced(scene, plate, scale)
    turn = geometry.coefficients(shot.corners, plate)
    beyond = (rng.randint(10, 160),) * 3
    picture = scene.transform(
        shot.picture.size, Image.Transform.PERSPECTIVE, turn, Image.Resampling.BICUBIC,
        fillcolor=beyond,
    )  # fmt: skip
    lit = weather(np.asarray(picture, np.float32), rng)
    return Image.fromarray(np.clip(lit, 0, 255).astype(np.uint8))


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
