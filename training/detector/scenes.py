"""One sample for the detector: a photo with rendered plates and signs in it, and where they are."""

from random import Random

import numpy as np
from PIL import Image

from ..plates.face import Face, draw_face
from ..scene import geometry
from ..scene.mounting import mount
from ..scene.signs import draw_sign
from ..scene.vehicle import park
from .close_up import close_up
from .overlay import bounds, lay, lit, recoloured, seen
from .photos import Known, erase, view
from .tilt import strong_tilt

MOST = 16  # plates on a sample
_EXCHANGED = 0.85  # share of a photo's plates
_CLOSE_UPS = 0.3  # share of samples
_HEIGHTS = (6, 90)  # pixels of a pasted plate


class _Scene:
    """A picture under construction; `boxes` and `corners` of its plates so far."""

    def __init__(self, picture: Image.Image):
        self.picture = picture
        self.boxes: list[np.ndarray] = []
        self.corners: list[np.ndarray] = []

    def add(self, box: np.ndarray, corners: np.ndarray) -> None:
        self.boxes.append(np.clip(box, 0, self.picture.width))
        self.corners.append(corners)

    def is_free(self, box: np.ndarray) -> bool:
        return not any(
            (np.minimum(box[2:], b[2:]) > np.maximum(box[:2], b[:2])).all() for b in self.boxes
        )


def sample(photos: list[Known], fonts: dict, rng: Random, size: int, scales: tuple[float, float]):
    """Return (uint8 size x size x 3, boxes N x 4, corners N x 4 x 2, zeros where not known)."""
    part, boxes = view(rng.choice(photos), size, scales, rng)
    if rng.random() < _CLOSE_UPS:
        picture, boxes, corners = close_up(_without(part, boxes, rng), fonts, rng)
        return np.asarray(seen(picture, rng)), boxes, corners
    scene = _Scene(recoloured(part, rng))
    for box in boxes:
        if rng.random() < _EXCHANGED:
            _exchange(scene, box, fonts, rng)
        else:
            scene.add(box, np.zeros((4, 2)))
    for _ in range(rng.choice((0, 1, 1, 2, 3))):
        _paste(scene, draw_face(fonts, rng), fonts, rng)
    for _ in range(rng.choice((0, 1, 2, 3))):
        _paste(scene, draw_sign(fonts, rng), fonts, rng)
    picture = seen(scene.picture, rng)
    shape = (-1, 4), (-1, 4, 2)
    found = [np.array(list_[:MOST]).reshape(s) for list_, s in
             zip((scene.boxes, scene.corners), shape, strict=True)]  # fmt: skip
    return np.asarray(picture), *found


def _without(part: Image.Image, boxes: np.ndarray, rng: Random) -> Image.Image:
    for box in boxes:
        erase(part, box)
    return recoloured(part, rng)


def _exchange(scene: _Scene, box: np.ndarray, fonts: dict, rng: Random) -> None:
    """Put a rendered plate where a real one is, about as large and as bright."""
    light = float(np.asarray(scene.picture.crop(tuple(box)).convert("L")).mean())
    wide, high = box[2:] - box[:2]
    erase(scene.picture, box + np.array([-0.1 * wide, -0.15 * high, 0.1 * wide, 0.15 * high]))
    face = draw_face(fonts, rng)
    gain = min(1.4, max(0.15, light / max(np.asarray(face.picture.convert("L")).mean(), 1)))
    picture = face.picture.point(lambda value: value * gain * rng.uniform(0.9, 1.1))
    aspect = face.picture.width / face.picture.height
    height = (wide * high / aspect) ** 0.5 * rng.uniform(0.95, 1.3)
    middle = (box[:2] + box[2:]) / 2
    flat = geometry.corners(0, 0, height * aspect, height)
    angles = rng.gauss(0, 14), rng.gauss(0, 6), rng.gauss(0, 2.5)
    quad = geometry.tilted(flat, angles, rng.uniform(2, 6))
    quad += middle - quad.mean(axis=0)
    area = geometry.corners(0, 0, *picture.size)
    lay(scene.picture, picture, area, quad, 0.4)
    scene.add(bounds(quad), quad)


def _paste(scene: _Scene, face: Face, fonts: dict, rng: Random) -> None:
    """Paste a plate or sign with some car around it at a free place, if one is found soon."""
    picture, mask, box = _object(face, fonts, rng)
    low, high = _HEIGHTS
    height = low * (high / low) ** rng.random()
    height *= rng.uniform(1, 2.5) if rng.random() < 0.15 else 1
    scale = height / (box[3] - box[1])
    area = geometry.corners(0, 0, *picture.size)
    spread = geometry.tilted(area * scale, strong_tilt(rng), rng.uniform(2, 6))
    plate = geometry.project(geometry.homography(area, spread), geometry.corners(*box))
    for _ in range(6):
        room = scene.picture.width - np.ptp(plate, axis=0)
        if (room <= 0).any():
            return
        move = np.array([rng.random(), rng.random()]) * room - plate.min(axis=0)
        if scene.is_free(bounds(spread + move)):
            break
    else:
        return
    picture = lit(picture, rng)
    lay(scene.picture, picture, area, spread + move, height * 0.05, mask)
    if face.text:
        scene.add(bounds(plate + move), plate + move)


def _object(face: Face, fonts: dict, rng: Random):
    """Return (picture, mask, the plate's box): a plate on a car, on part of one, or alone."""
    draw = rng.random()
    if draw < 0.4:
        return park(face, fonts, rng)
    if draw < 0.8:
        picture, box = mount(face, fonts, rng)
    else:
        picture, box = face.picture, (0, 0, *face.picture.size)
    return picture, Image.new("L", picture.size, 255), box
