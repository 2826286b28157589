"""Draws small photos of plates that the real engine reads."""

import random
from pathlib import Path

from PIL import Image, ImageDraw, ImageFilter, ImageFont

SIZE = (320, 240)
LETTERS = "ABCDEFGHKLMNPRSTUVWX"


def draw(folder: Path, count: int) -> None:
    """Draw plate-000.jpg and so on, every one with another text."""
    dice = random.Random(7)
    font = ImageFont.load_default(size=32)
    folder.mkdir(exist_ok=True)
    for number in range(count):
        text = "".join(dice.choices(LETTERS, k=3)) + f" {dice.randrange(1000, 10000)}"
        image = street()
        pen = ImageDraw.Draw(image)
        pen.rounded_rectangle((75, 130, 245, 172), 5, (245, 245, 240), (20, 20, 20), 2)
        pen.text((160, 151), text, (15, 15, 20), font, anchor="mm")
        image.filter(ImageFilter.GaussianBlur(0.6)).save(folder / f"plate-{number:03d}.jpg")


def draw_street(path: Path) -> None:
    street().save(path)


def street() -> Image.Image:
    image = Image.linear_gradient("L").resize(SIZE).convert("RGB")
    ImageDraw.Draw(image).rounded_rectangle((30, 40, 290, 220), 30, fill=(38, 52, 92))
    return image
