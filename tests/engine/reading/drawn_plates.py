"""Photos with plates that the tests draw themselves."""

import numpy as np
from PIL import Image, ImageDraw, ImageFilter, ImageFont


def draw_plate(text: str, height: int = 60, ground=(236, 236, 232), ink=(24, 24, 28)):
    """Return a plate picture with dark lettering, as high as asked and as wide as needed."""
    font = ImageFont.load_default(size=round(height * 0.8))
    probe = ImageDraw.Draw(Image.new("RGB", (1, 1)))
    box = probe.textbbox((0, 0), text, font, stroke_width=2)
    width = box[2] - box[0] + height
    plate = Image.new("RGB", (width, height), ground)
    draw = ImageDraw.Draw(plate)
    draw.rectangle((1, 1, width - 2, height - 2), outline=ink, width=2)
    at = (height / 2 - box[0], (height - box[3] + box[1]) / 2 - box[1])
    draw.text(at, text, ink, font, stroke_width=2)
    return plate


def photo_with(*placed, size=(960, 640), ground=(70, 84, 104), turn=0.0) -> np.ndarray:
    """Return a softly focused RGB photo; `placed` are (picture, left, top)."""
    photo = Image.new("RGB", size, ground)
    for picture, left, top in placed:
        photo.paste(picture, (left, top))
    photo = photo.rotate(turn, Image.Resampling.BICUBIC, fillcolor=ground)
    return np.asarray(photo.filter(ImageFilter.GaussianBlur(0.7)))
