"""What lens, sensor and file format do to a picture: blur, noise, sharpening, scaling, JPEG."""

import io
from random import Random

import numpy as np
from PIL import Image, ImageFilter


def photograph(picture: Image.Image, rng: Random, detail: float) -> Image.Image:
    """Return the picture as a camera stores it.

    `detail` is the height of the plate in pixels; small plates get less blur, so that most stay
    readable.
    """
    strength = min(1.0, max(0.25, detail / 45))
    draw = rng.random()
    if draw < 0.4:
        picture = picture.filter(ImageFilter.GaussianBlur(abs(rng.gauss(0, 1.1)) * strength))
    elif draw < 0.55:
        picture = _moved(picture, rng, strength)
    picture = _noisy(picture, rng)
    if rng.random() < 0.3:
        picture = picture.filter(
            ImageFilter.UnsharpMask(rng.uniform(0.8, 2), rng.randint(50, 220), 0)
        )
    if rng.random() < 0.8:
        picture = _stored(picture, rng)
    return picture


def _moved(picture: Image.Image, rng: Random, strength: float) -> Image.Image:
    """Blur along a line of a few pixels."""
    pixels = np.asarray(picture, np.float32)
    steps = max(2, round(rng.uniform(2, 6) * strength))
    dx, dy = rng.choice(((1, 0), (0, 1), (1, 1), (1, -1), (1, 0)))
    total = sum(np.roll(pixels, (i * dy, i * dx), (0, 1)) for i in range(steps))
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
    picture.save(file, "JPEG", quality=rng.choice((rng.randint(14, 45), rng.randint(40, 95))))
    stored = Image.open(file)
    return stored if scale == 1 else stored.resize(size, Image.Resampling.BILINEAR)
