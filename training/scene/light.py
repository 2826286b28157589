"""What light, weather and dirt do to a small picture; arrays are float32, H x W x 3, 0..255."""

from random import Random

import numpy as np
from PIL import Image


def weather(picture: np.ndarray, rng: Random) -> np.ndarray:
    """Apply a few of: dirt, shadow, glare, exposure, tint, night, infrared."""
    for chance, effect in ((0.3, _dirt), (0.3, _shadow), (0.22, _glare)):
        if rng.random() < chance:
            picture = effect(picture, rng)
    draw = rng.random()
    if draw < 0.05:
        return _infrared(picture, rng)
    if draw < 0.17:
        return _night(picture, rng)
    return _daylight(picture, rng)


def _spots(shape: tuple[int, ...], cells: int, rng: Random) -> np.ndarray:
    """Return a soft random field, H x W x 1, 0..1."""
    noise = np.frombuffer(rng.randbytes(cells * cells), np.uint8).reshape(cells, cells)
    field = Image.fromarray(noise).resize((shape[1], shape[0]), Image.Resampling.BICUBIC)
    return np.asarray(field, np.float32)[..., None] / 255


def _dirt(picture: np.ndarray, rng: Random) -> np.ndarray:
    cover = _spots(picture.shape, rng.choice((4, 9, 20)), rng)
    cover = np.clip((cover - rng.uniform(0.4, 0.8)) * 3, 0, 1) * rng.uniform(0.2, 0.75)
    mud = np.array(rng.choice(((96, 84, 66), (60, 56, 52), (140, 130, 116))), np.float32)
    return picture * (1 - cover) + mud * cover


def _shadow(picture: np.ndarray, rng: Random) -> np.ndarray:
    high, wide = picture.shape[:2]
    y, x = np.mgrid[0:high, 0:wide].astype(np.float32)
    slope, at = rng.uniform(-1, 1), rng.uniform(0.15, 0.85)
    across = (y / high - at) + slope * (x / wide - 0.5)
    edge = np.clip(across * rng.choice((3, 12, 40)) + 0.5, 0, 1)[..., None]
    edge = edge if rng.random() < 0.5 else 1 - edge
    return picture * (1 - edge * rng.uniform(0.25, 0.65))


def _glare(picture: np.ndarray, rng: Random) -> np.ndarray:
    high, wide = picture.shape[:2]
    y, x = np.mgrid[0:high, 0:wide].astype(np.float32)
    cx, cy, reach = rng.uniform(0, wide), rng.uniform(0, high), rng.uniform(0.3, 1.2) * high
    shine = np.exp(-(((x - cx) / 2) ** 2 + (y - cy) ** 2) / reach**2)[..., None]
    colour = np.array(rng.choice(((255, 255, 250), (255, 230, 180), (230, 240, 255))), np.float32)
    return picture + colour * shine * rng.uniform(0.15, 0.8)


def _daylight(picture: np.ndarray, rng: Random) -> np.ndarray:
    gain = rng.choice((rng.uniform(0.75, 1.15), rng.uniform(0.35, 1.4)))
    tint = np.array([rng.gauss(1, 0.05), 1, rng.gauss(1, 0.06)], np.float32)
    contrast = rng.choice((1.0, rng.uniform(0.45, 1.25)))
    level = rng.uniform(60, 160)
    return ((picture - level) * contrast + level) * tint * gain


def _night(picture: np.ndarray, rng: Random) -> np.ndarray:
    """Darken: evenly, or by a gamma that drowns the dark parts, with a sensor's noise."""
    if rng.random() < 0.5:
        dark = 255 * (np.clip(picture, 0, 255) / 255) ** rng.uniform(1.5, 4.5)
        dice = np.random.default_rng(rng.getrandbits(32))
        return dark + rng.uniform(0, 12) * dice.standard_normal(picture.shape, np.float32)
    tint = np.array(rng.choice(((1.0, 0.85, 0.6), (0.8, 0.85, 1.0), (0.75, 0.8, 1.0))), np.float32)
    return picture * tint * rng.uniform(0.14, 0.55) + rng.uniform(0, 14)


def _infrared(picture: np.ndarray, rng: Random) -> np.ndarray:
    grey = picture.mean(axis=2, keepdims=True) * rng.uniform(0.5, 1.3)
    return np.repeat(grey, 3, axis=2)
