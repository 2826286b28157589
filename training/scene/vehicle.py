"""Draws the rear or front of a car roughly around a plate: lamps, glass, grille, badges, words.

Not to be mistaken for a photo; what matters is that the plate is not the only thing with an edge.
"""

from random import Random

from PIL import Image, ImageChops, ImageDraw

from ..plates.face import Face
from ..plates.glyphs import line

_PAINTS = (
    (20, 20, 24), (48, 50, 54), (104, 106, 110), (168, 170, 172), (222, 222, 220), (120, 22, 26),
    (28, 40, 84), (24, 56, 50), (120, 100, 70), (60, 90, 140), (200, 190, 170), (10, 10, 12),
)  # fmt: skip
_WORDS = (
    "TURBO",
    "Hybrid",
    "GTI",
    "AWD",
    "320d",
    "Sport",
    "TDI",
    "XL",
    "V6",
    "electric",
    "CARAVAN",
)
_PLATE_HEIGHT = 36  # pixels of the plate on the drawing
_SHARE = (0.2, 0.34)  # of the car's width that a long plate takes


def park(face: Face, fonts: dict, rng: Random):
    """Return (RGB picture, its outline as mask, the plate's box in pixels)."""
    high = _PLATE_HEIGHT
    wide = round(high * face.picture.width / face.picture.height)
    car_wide = round(high * 4.6 / rng.uniform(*_SHARE))
    car_high = round(car_wide * rng.uniform(0.6, 0.95))
    paint = rng.choice(_PAINTS)
    car = _body((car_wide, car_high), paint, rng)
    draw = ImageDraw.Draw(car)
    _glass(draw, car.size, rng)
    _lamps(draw, car.size, rng)
    _grille(draw, car.size, rng)
    _badges(car, fonts, rng)
    left = (car_wide - wide) // 2 + round(rng.gauss(0, 0.01) * car_wide)
    top = round(car_high * rng.uniform(0.55, 0.84))
    dark = tuple(c // 2 for c in paint)
    draw.rounded_rectangle((left - 8, top - 6, left + wide + 8, top + high + 6), 6, fill=dark)
    car.paste(face.picture.resize((wide, high), Image.Resampling.BOX), (left, top))
    return car, _outline(car.size, rng), (left, top, left + wide, top + high)


def _body(size: tuple[int, int], paint: tuple, rng: Random) -> Image.Image:
    shades = [rng.uniform(0.5, 1.3) for _ in range(rng.randint(3, 7))]
    column = Image.new("RGB", (1, len(shades)))
    column.putdata([tuple(min(255, round(c * shade)) for c in paint) for shade in shades])
    return column.resize(size, Image.Resampling.BICUBIC)


def _outline(size: tuple[int, int], rng: Random) -> Image.Image:
    wide, high = size
    lower, upper = Image.new("L", size), Image.new("L", size)
    middle = high * rng.uniform(0.3, 0.45)
    ImageDraw.Draw(lower).rounded_rectangle((0, middle, wide, high), wide * 0.07, fill=255)
    inset = wide * rng.uniform(0.08, 0.2)
    roof = [
        (inset, 0),
        (wide - inset, 0),
        (wide - 2, middle + 0.1 * high),
        (2, middle + 0.1 * high),
    ]
    ImageDraw.Draw(upper).polygon(roof, fill=255)
    return ImageChops.lighter(lower, upper)


def _glass(draw: ImageDraw.ImageDraw, size: tuple[int, int], rng: Random) -> None:
    wide, high = size
    shade = rng.randint(12, 90)
    top, bottom = high * 0.05, high * rng.uniform(0.3, 0.42)
    corners = [(wide * 0.2, top), (wide * 0.8, top), (wide * 0.88, bottom), (wide * 0.12, bottom)]
    draw.polygon(corners, fill=(shade, shade, shade + 8))
    for _ in range(rng.randint(0, 4)):
        x, light = rng.uniform(0.2, 0.7) * wide, rng.randint(40, 150)
        draw.line(
            (x, top, x + rng.uniform(-40, 60), bottom), fill=(light,) * 3, width=rng.randint(1, 9)
        )


def _lamps(draw: ImageDraw.ImageDraw, size: tuple[int, int], rng: Random) -> None:
    wide, high = size
    colour = rng.choice(
        ((170, 20, 24), (120, 10, 14), (235, 60, 50), (226, 228, 230), (250, 250, 240))
    )
    top, bottom = sorted(high * rng.uniform(0.38, 0.68) for _ in range(2))
    reach = wide * rng.uniform(0.1, 0.24)
    for left, right in ((2, reach), (wide - reach, wide - 2)):
        draw.rounded_rectangle((left, top, right, bottom + 6), 8, fill=colour)
        if rng.random() < 0.5:
            core = ((left + right) / 2, (top + bottom) / 2)
            draw.ellipse((core[0] - 9, core[1] - 6, core[0] + 9, core[1] + 6), fill=(255, 244, 236))


def _grille(draw: ImageDraw.ImageDraw, size: tuple[int, int], rng: Random) -> None:
    wide, high = size
    y = high * rng.uniform(0.5, 0.9)
    for _ in range(rng.choice((0, 1, 3, 6))):
        shade = rng.choice((8, 20, 40, 150, 210))
        inset = wide * rng.uniform(0.02, 0.3)
        draw.line((inset, y, wide - inset, y), fill=(shade,) * 3, width=rng.randint(1, 7))
        y += high * rng.uniform(0.02, 0.06)


def _badges(car: Image.Image, fonts: dict, rng: Random) -> None:
    wide, high = car.size
    if rng.random() < 0.6:
        x, y, r = wide / 2, high * rng.uniform(0.42, 0.54), high * 0.035
        ImageDraw.Draw(car).ellipse(
            (x - r, y - r, x + r, y + r), fill=(190, 192, 196), outline=(40,) * 3
        )
    for place in (0.16, 0.7):
        if rng.random() < 0.5:
            mask = line(rng.choice(fonts["caption"]), rng.choice(_WORDS), rng.randint(8, 22))
            at = (round(place * wide), round(high * rng.uniform(0.45, 0.8)))
            car.paste(rng.choice(((200, 202, 206), (30, 30, 34), (170, 30, 34))), at, mask)
