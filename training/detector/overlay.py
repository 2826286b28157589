"""How pictures are changed and laid over each other when the detector's scenes are made."""

from random import Random

import numpy as np
from PIL import Image, ImageFilter

from ..scene import geometry
from ..scene.camera import photograph
from ..scene.light import weather

_TURN = (Image.Transform.PERSPECTIVE, Image.Resampling.BILINEAR)


def recoloured(part: Image.Image, rng: Random) -> Image.Image:
    """Give a photo another white balance and exposure: one dashcam's tint must not be learnt."""
    if rng.random() < 0.1:
        return part.convert("L").convert("RGB")
    pixels = np.asarray(part, np.float32)
    means = pixels.mean(axis=(0, 1)) + 1
    neutral = (means.mean() / means) ** rng.uniform(0, 1.1)
    level = (rng.uniform(50, 150) / means.mean()) ** rng.uniform(0, 1)
    tint = np.array([rng.gauss(1, 0.07), 1, rng.gauss(1, 0.07)])
    return Image.fromarray(np.clip(pixels * neutral * level * tint, 0, 255).astype(np.uint8))


def lit(picture: Image.Image, rng: Random) -> Image.Image:
    """Give half of the pictures their own light and weather."""
    if rng.random() < 0.5:
        return picture
    lit = weather(np.asarray(picture, np.float32), rng)
    return Image.fromarray(np.clip(lit, 0, 255).astype(np.uint8))


def lay(target: Image.Image, picture: Image.Image, area, quad, soft: float, mask=None) -> None:
    """Lay a picture's area over a quad of the target, `soft` pixels blurred at its edges."""
    mask = mask or Image.new("L", picture.size, 255)
    left, top = np.maximum(np.floor(quad.min(axis=0)) - 1, 0).astype(int)
    right, bottom = np.minimum(np.ceil(quad.max(axis=0)) + 1, target.size).astype(int)
    size = (max(1, int(right - left)), max(1, int(bottom - top)))
    scale = float(np.hypot(*(quad[3] - quad[0])) / np.hypot(*(area[3] - area[0])))
    if scale < 0.7:
        small = (max(2, round(picture.width * scale)), max(2, round(picture.height * scale)))
        area = area * (np.array(small) / np.array(picture.size))
        picture, mask = (part.resize(small, Image.Resampling.BOX) for part in (picture, mask))
    turn = geometry.coefficients(quad - [left, top], area)
    laid = picture.transform(size, _TURN[0], turn, _TURN[1])
    mask = mask.transform(size, _TURN[0], turn, _TURN[1])
    target.paste(laid, (int(left), int(top)), mask.filter(ImageFilter.BoxBlur(soft)))


def bounds(quad: np.ndarray) -> np.ndarray:
    """Return left, top, right, bottom of the upright box around a quad."""
    return np.concatenate([quad.min(axis=0), quad.max(axis=0)])


def seen(picture: Image.Image, rng: Random) -> Image.Image:
    """Return the finished scene as a camera stores it."""
    if rng.random() < 0.4:
        picture = lit(picture, rng)
    return photograph(picture, rng, 25) if rng.random() < 0.7 else picture
