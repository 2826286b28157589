"""What lens, sensor and file format do to a picture: blur, noise, sharpening, scaling, JPEG."""

import io
from math import cos, pi, sin
from random import Random

import numpy as np
from PIL import Image, ImageFilter

# Shares of the plate's height on the photo
_BLUR = 0.021  # spread of the blur's spread
_MOTION = (0.02, 0.17)
_SHARPEST = 90  # pixels of a plate's height above which blur does not grow


def photograph(picture: Image.Image, rng: Random, detail: float) -> Image.Image:
    """Return the picture as a camera stores it.

    `detail` is the height of the plate in pixels; blur grows with it, so that most stay readable.
    """
    draw = rng.random()
    if draw < 0.42:
        sigma = min(abs(rng.gauss(0, _BLUR)), 2.4 * _BLUR) * min(detail, _SHARPEST)
        picture = picture.filter(ImageFilter.GaussianBlur(sigma))
    elif draw < 0.58:
        picture = _moved(picture, rng.uniform(*_MOTION) * min(detail, _SHARPEST), rng)
    picture = _noisy(picture, rng)
    if rng.random() < 0.3:
        picture = picture.filter(
            ImageFilter.UnsharpMask(rng.uniform(0.8, 2), rng.randint(50, 220), 0)
        )
    if rng.random() < 0.8:
        picture = _stored(picture, rng)
    return picture


def _moved(picture: Image.Image, length: float, rng: Random) -> Image.Image:
    """Blur along a line of some pixels, mostly as a passing car or a nodding camera does."""
    pixels = np.asarray(picture, np.float32)
    steps = max(2, round(length) + 1)
    angle = rng.choice((0.0, 0.0, pi / 2, rng.uniform(0, pi)))
    reach = np.arange(steps) - (steps - 1) / 2
    places = zip(np.rint(reach * cos(angle)), np.rint(reach * sin(angle)), strict=True)
    total = sum(np.roll(pixels, (int(y), int(x)), (0, 1)) for x, y in places)
    return Image.fromarray((total / steps).astype(np.uint8))


def _noisy(picture: Image.Image, rng: Random) -> Image.Image:
    sigma = rng.choice((0.0, 0.0, rng.uniform(1, 5), rng.uniform(3, 11)))
    if sigma == 0:
        return picture
    pixels = np.asarray(picture, np.float32)
    dice = np.random.default_rng(rng.getrandbits(32))
    depth = rng.choice((1, 3))
    grain = dice.standard_normal((*pixels.shape[:2], depth), np.float32)
    return Image.fromarray(np.clip(pixels + sigma * grain, 0, 255).astype(np.uint8))


def _stored(picture: Image.Image, rng: Random) -> Image.Image:
    """Compress as JPEG, at times scaled up or down before, as sites and video do."""
    size = picture.size
    scale = rng.choice((1, 1, 1, rng.uniform(0.7, 2.2)))
    if scale != 1:
        picture = picture.resize(
            (max(8, round(size[0] * scale)), max(8, round(size[1] * scale))),
            rng.choice((Image.Resampling.BILINEAR, Image.Resampling.BICUBIC)),
        )
    file = io.BytesIO()
    picture.save(
        file,
        "JPEG",
        quality=rng.choice((rng.randint(10, 40), rng.randint(40, 95), rng.randint(40, 95))),
    )
    stored = Image.open(file)
    return stored if scale == 1 else stored.resize(size, Image.Resampling.BILINEAR)
