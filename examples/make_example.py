"""Draws car.jpg, the example photo of this folder: a car's rear with a plate, all by code.

Usage: python examples/make_example.py [FILE]
"""

import random
import sys
from pathlib import Path

from PIL import Image, ImageChops, ImageDraw, ImageFilter, ImageFont

PLATE_TEXT = "ZV17 ANP"
SIZE = (1280, 800)
FINE = 2  # drawn at twice the size, then reduced: smooth edges
PAINT = (38, 66, 104)


def main() -> None:
    target = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).with_name("car.jpg")
    picture = as_photographed(scene())
    picture.save(target, quality=88)


def scene() -> Image.Image:
    picture = surroundings()
    draw = ImageDraw.Draw(picture)
    draw_shadow(picture)
    draw_body(draw)
    draw_window(picture)
    draw_lights(picture)
    draw_bumper(draw)
    plate = plate_picture()
    picture.paste(plate, scaled(640 - plate.width // 4, 503), None)
    return picture


def scaled(*values: float) -> tuple[int, ...]:
    return tuple(round(FINE * value) for value in values)


def surroundings() -> Image.Image:
    """Sky, a blurred hedge and a wall, and the road."""
    picture = Image.new("RGB", scaled(*SIZE))
    picture.paste(shade((176, 192, 208), (214, 220, 224), scaled(1280, 300)), (0, 0))
    picture.paste(shade((120, 118, 114), (82, 81, 80), scaled(1280, 380)), scaled(0, 420))
    draw = ImageDraw.Draw(picture)
    draw.rectangle(scaled(0, 300, 1280, 430), fill=(134, 122, 110))
    dice = random.Random(17)
    for _ in range(900):
        x, y, r = dice.uniform(0, 1280), dice.uniform(180, 330), dice.uniform(6, 22)
        green = dice.randint(60, 120)
        draw.ellipse(scaled(x - r, y - r, x + r, y + r), fill=(green // 2 + 12, green, 40))
    return picture.filter(ImageFilter.GaussianBlur(FINE * 4))


def shade(top: tuple, bottom: tuple, size: tuple[int, ...]) -> Image.Image:
    """A vertical gradient between two colours."""
    ramp = Image.linear_gradient("L").resize(size)
    return Image.composite(Image.new("RGB", size, bottom), Image.new("RGB", size, top), ramp)


def draw_shadow(picture: Image.Image) -> None:
    mask = Image.new("L", picture.size)
    ImageDraw.Draw(mask).ellipse(scaled(200, 660, 1080, 760), fill=200)
    mask = mask.filter(ImageFilter.GaussianBlur(FINE * 14))
    picture.paste((24, 24, 26), (0, 0), mask)


def draw_body(draw: ImageDraw.ImageDraw) -> None:
    for left in (285, 855):
        draw.rounded_rectangle(scaled(left, 600, left + 140, 730), FINE * 30, fill=(20, 20, 22))
    outline = [(300, 420), (390, 190), (460, 160), (820, 160), (890, 190), (980, 420)]
    draw.polygon([scaled(*p) for p in outline], fill=darker(PAINT, 0.9))
    draw.rounded_rectangle(scaled(250, 370, 1030, 680), FINE * 46, fill=PAINT)
    draw.rounded_rectangle(scaled(262, 376, 1018, 400), FINE * 12, fill=lighter(PAINT, 40))
    draw.line(scaled(300, 480, 980, 480), fill=darker(PAINT, 0.7), width=FINE * 2)
    draw.rounded_rectangle(scaled(470, 488, 810, 592), FINE * 14, fill=darker(PAINT, 0.62))
    draw.rounded_rectangle(scaled(540, 470, 740, 486), FINE * 6, fill=(190, 194, 198))


def draw_window(picture: Image.Image) -> None:
    mask = Image.new("L", picture.size)
    corners = [(360, 365), (425, 215), (475, 190), (805, 190), (855, 215), (920, 365)]
    ImageDraw.Draw(mask).polygon([scaled(*p) for p in corners], fill=255)
    glass = shade((96, 112, 126), (26, 30, 36), picture.size)
    picture.paste(glass, (0, 0), mask.filter(ImageFilter.GaussianBlur(FINE)))
    draw = ImageDraw.Draw(picture)
    for left in (450, 690):
        draw.rounded_rectangle(scaled(left, 290, left + 130, 365), FINE * 26, fill=(22, 24, 28))


def draw_lights(picture: Image.Image) -> None:
    draw = ImageDraw.Draw(picture)
    for left in (268, 872):
        box = (left, 410, left + 140, 500)
        draw.rounded_rectangle(scaled(*box), FINE * 20, fill=(116, 14, 18))
        inner = (left + 10, 420, left + 130, 452)
        draw.rounded_rectangle(scaled(*inner), FINE * 14, fill=(206, 32, 34))
        draw.rounded_rectangle(
            scaled(left + 14, 460, left + 126, 490), FINE * 10, fill=(226, 214, 206)
        )


def draw_bumper(draw: ImageDraw.ImageDraw) -> None:
    draw.rounded_rectangle(scaled(240, 600, 1040, 690), FINE * 34, fill=darker(PAINT, 0.8))
    draw.rounded_rectangle(scaled(380, 640, 900, 696), FINE * 16, fill=(34, 35, 38))
    for left in (400, 820):
        draw.rounded_rectangle(scaled(left, 650, left + 60, 666), FINE * 6, fill=(150, 24, 26))


def plate_picture() -> Image.Image:
    """A white plate with a blue band, in twice the pixels it takes on the photo."""
    width, height = scaled(300, 66)
    plate = shade((238, 238, 234), (222, 222, 218), (width, height))
    draw = ImageDraw.Draw(plate)
    draw.rounded_rectangle((1, 1, width - 2, height - 2), FINE * 7, outline=(30, 30, 30), width=4)
    draw.rectangle((6, 6, FINE * 24, height - 7), fill=(24, 58, 140))
    font = ImageFont.load_default(size=FINE * 52)
    left, top, right, bottom = draw.textbbox((0, 0), PLATE_TEXT, font, stroke_width=3)
    x = (width + FINE * 24 - (right - left)) / 2 - left
    y = (height - (bottom - top)) / 2 - top
    draw.text((x, y), PLATE_TEXT, (26, 26, 30), font, stroke_width=3)
    return plate


def as_photographed(picture: Image.Image) -> Image.Image:
    """Seen from the side and a little tilted, softly focused, with vignette and grain."""
    width, height = picture.size
    corners = (30, 10, 10, height - 40, width - 10, height - 10, width - 50, 20)
    seen = picture.transform(picture.size, Image.Transform.QUAD, corners, Image.Resampling.BICUBIC)
    seen = seen.resize(SIZE, Image.Resampling.LANCZOS).filter(ImageFilter.GaussianBlur(0.8))
    edges = Image.radial_gradient("L").resize(SIZE).point(lambda v: 255 - v // 5)
    seen = ImageChops.multiply(seen, Image.merge("RGB", [edges] * 3))
    return Image.blend(seen, grain(), 0.06)


def grain() -> Image.Image:
    """Camera noise, the same at every run."""
    noise = random.Random(3).randbytes(SIZE[0] * SIZE[1])
    return Image.merge("RGB", [Image.frombytes("L", SIZE, noise)] * 3)


def darker(colour: tuple, factor: float) -> tuple:
    return tuple(round(channel * factor) for channel in colour)


def lighter(colour: tuple, amount: int) -> tuple:
    return tuple(min(255, channel + amount) for channel in colour)


if __name__ == "__main__":
    main()
