"""Pictures that show little but one plate: close-ups, crops, plates cut by the picture's edge."""

from random import Random

import numpy as np
from PIL import Image

from ..plates.face import draw_face
from ..scene import geometry
from ..scene.mounting import mount
from .overlay import bounds, lay, lit
from .tilt import strong_tilt

_WIDTHS = (0.35, 1.2)  # of the plate, as shares of the picture's longer side
_BORDER = (0.0, 0.35)  # of a crop, as shares of the plate's sides
_SHOWN = 0.72  # share of a plate that is visible at least
_GREY = (114, 114, 114)  # what the engine puts beside a picture
_COARSE = (20, 110)  # pixels in height of a picture that was enlarged


def close_up(ground: Image.Image, fonts: dict, rng: Random):
    """Return (RGB picture of the ground's size, boxes 1 x 4, corners 1 x 4 x 2)."""
    face = draw_face(fonts, rng)
    if rng.random() < 0.75:
        picture, box = mount(face, fonts, rng)
    else:
        picture, box = face.picture, (0, 0, *face.picture.size)
    cut = _crop if rng.random() < 0.5 else _near
    return cut(ground, lit(picture, rng), np.array(box, np.float64), rng)


def _near(ground: Image.Image, picture: Image.Image, box: np.ndarray, rng: Random):
    """A plate in front of the ground, up to wider than it."""
    size, scene = ground.width, ground.copy()
    wide, high = box[2:] - box[:2]
    low, most = _WIDTHS
    scale = size * low * (most / low) ** rng.random() / max(wide, high * 1.3)
    area = geometry.corners(0, 0, *picture.size)
    spread = geometry.tilted(area * scale, strong_tilt(rng), rng.uniform(2, 6))
    plate = geometry.project(geometry.homography(area, spread), geometry.corners(*box))
    span = np.ptp(plate, axis=0)
    move = _place(span, np.array([size, size]), rng) - plate.min(axis=0)
    lay(scene, picture, area, spread + move, 1)
    return _coarse(scene, rng), *_target(plate + move, scene.size)


def _crop(ground: Image.Image, picture: Image.Image, box: np.ndarray, rng: Random):
    """A plate cut out of a photo by somebody's box; the rest of the field is grey, as at work."""
    size = ground.width
    area = geometry.corners(0, 0, *picture.size)
    spread = geometry.tilted(area, strong_tilt(rng) if rng.random() < 0.5 else (0, 0, 0), 4)
    plate = geometry.project(geometry.homography(area, spread), geometry.corners(*box))
    left, top, right, bottom = bounds(plate)
    wide, high = right - left, bottom - top
    border = rng.choice((0.0, rng.uniform(*_BORDER)))
    out = [border * rng.uniform(0, 1.3) - 0.03 * rng.random() for _ in range(4)]
    part = np.array([left - out[0] * wide, top - out[1] * high,
                     right + out[2] * wide, bottom + out[3] * high])  # fmt: skip
    scale = size / max(part[2:] - part[:2]) * rng.choice((1, 1, rng.uniform(0.5, 1)))
    shape = np.maximum(np.round((part[2:] - part[:2]) * scale), 8).astype(int)
    scene = ground.resize(tuple(map(int, shape)))
    lay(scene, picture, area, (spread - part[:2]) * scale, 0.5)
    field = Image.new("RGB", ground.size, _GREY)
    field.paste(_coarse(scene, rng))
    return field, *_target((plate - part[:2]) * scale, tuple(map(int, shape)))


def _place(span: np.ndarray, room: np.ndarray, rng: Random) -> np.ndarray:
    """Return where the plate's box begins so that most of it is on the picture."""
    hidden = (1 - _SHOWN**0.5) * span if rng.random() < 0.3 else 0 * span
    low, high = -hidden, room - span + hidden
    low, high = np.minimum(low, high), np.maximum(low, high)
    return low + (high - low) * [rng.random(), rng.random()]


def _target(quad: np.ndarray, size: tuple[int, int]):
    box = np.clip(bounds(quad), 0, [*size, *size])
    return box[None], quad[None]


def _coarse(picture: Image.Image, rng: Random) -> Image.Image:
    """Shrink and enlarge again, as when a few pixels are all there is."""
    if rng.random() < 0.55:
        return picture
    low, high = _COARSE
    share = low * (high / low) ** rng.random() / picture.height
    if share >= 1:
        return picture
    small = tuple(max(6, round(side * share)) for side in picture.size)
    how = rng.choice((Image.Resampling.BILINEAR, Image.Resampling.BICUBIC))
    return picture.resize(small, Image.Resampling.BOX).resize(picture.size, how)
