"""Draws the face of one plate, flat and evenly lit."""

from dataclasses import dataclass
from random import Random

import numpy as np
from PIL import Image, ImageChops, ImageDraw

from . import ornaments, pictures
from .catalogue import choose
from .design import WHITE, Colour, Design
from .lettering import Lettering, Mark, set_rows
from .text import write


@dataclass
class Face:
    """`picture` is RGB, the plate to its edges; `marks` are the characters of the text on it."""

    picture: Image.Image
    text: str
    design: Design
    marks: tuple[Mark, ...] = ()


def draw_face(fonts: dict, rng: Random, group: str = "", height: int = 0) -> Face:
    """Draw a plate of the group (any when empty), `height` pixels high (fitting when 0)."""
    design = choose(rng, group)
    rows, text = write(design, rng)
    high = height or (76 if len(rows) == 1 and design.aspect > 2.5 else 108)
    size = (round(high * design.aspect * rng.uniform(0.95, 1.05)), high)
    ground, ink = (_shade(c, rng) for c in rng.choice(design.palettes))
    plate = _ground(design, size, ground, rng)
    if design.band:
        ornaments.band(plate, design, fonts, rng)
    _captions(plate, design, ink, fonts, rng)
    if rng.random() < design.border:
        _edge(plate, ink, rng)
    lettering = set_rows(design, rows, size, fonts, rng)
    for box in lettering.seals:
        ornaments.seal(plate, box, design.seals, ink, rng)
    plate.paste(ink, (0, 0), lettering.ink)
    if rng.random() < 0.55:
        plate = _embossed(plate, lettering, rng)
    if rng.random() < design.stickers:
        ornaments.stickers(plate, fonts, rng)
    if rng.random() < design.wire_seal:
        ornaments.wire_seal(plate, rng)
    ornaments.screws(plate, design.screws or ((0.5, 0.1) if rng.random() < 0.15 else ()), rng)
    return Face(plate, text, design, tuple(lettering.marks))


def _shade(colour: Colour, rng: Random) -> Colour:
    """Return the colour as it may come out of a factory and some years of weather."""
    fade = rng.choice((0.0, 0.0, rng.uniform(0, 0.2)))
    tone = rng.uniform(-18, 12)
    return tuple(
        min(255, max(0, round(c + (150 - c) * fade + tone + rng.uniform(-5, 5)))) for c in colour
    )


def _ground(design: Design, size: tuple[int, int], colour: Colour, rng: Random) -> Image.Image:
    plate = Image.new("RGB", size, colour)
    if rng.random() < design.pictures:
        ground = pictures.soft_ground(size, colour, rng)
        plate = Image.blend(plate, ground, rng.uniform(0.2, 0.65))
    if rng.random() < 0.7 * design.pictures:
        pictures.drawing(plate, rng)
    for stripe, top in zip(design.stripes, (0.0, 0.9), strict=False):
        high = 0.24 if len(design.stripes) == 1 else 0.07
        area = (0, round(top * size[1]), size[0], round((top + high) * size[1]))
        ImageDraw.Draw(plate).rectangle(area, fill=_shade(stripe, rng))
    return plate


def _captions(plate: Image.Image, design: Design, ink: Colour, fonts: dict, rng: Random) -> None:
    colour = (
        WHITE if len(design.stripes) == 1 else rng.choice((ink, ink, (150, 30, 40), (40, 60, 140)))
    )
    top = design.box[1]
    for texts, y, high in (
        (design.header, 0.03 + 0.15 * top, top * rng.uniform(0.33, 0.6)),
        (design.footer, design.box[3] + 0.05, (1 - design.box[3]) * rng.uniform(0.35, 0.55)),
    ):
        text = rng.choice(texts) if texts else ""
        if text:
            arabic = any("\u0600" <= c <= "\u06ff" for c in text)
            font = rng.choice(fonts["arabic" if arabic else design.captions])
            ornaments.small_print(plate, text, (y, high), colour, font)


def _edge(plate: Image.Image, ink: Colour, rng: Random) -> None:
    width, height = plate.size
    inset = rng.uniform(0.0, 0.05) * height
    box = (inset, inset, width - 1 - inset, height - 1 - inset)
    ImageDraw.Draw(plate).rounded_rectangle(
        box, radius=height * rng.uniform(0.03, 0.12), outline=ink,
        width=max(1, round(height * rng.uniform(0.012, 0.035))),
    )  # fmt: skip


def _embossed(plate: Image.Image, lettering: Lettering, rng: Random) -> Image.Image:
    """Lighten one flank of the raised strokes and darken the other."""
    step = max(1, round(plate.height * 0.015))
    dx, dy = rng.choice(((1, 1), (-1, 1), (0, 1), (1, 0), (0, -1)))
    first = ImageChops.offset(lettering.ink, dx * step, dy * step)
    last = ImageChops.offset(lettering.ink, -dx * step, -dy * step)
    relief = (np.asarray(first, np.int16) - np.asarray(last, np.int16))[..., None]
    lit = np.asarray(plate, np.int16) + (relief * rng.uniform(0.08, 0.4)).astype(np.int16)
    return Image.fromarray(np.clip(lit, 0, 255).astype(np.uint8))
