"""What is on a plate beside its characters: country band, seals, stickers, screws, small print."""

from random import Random

from PIL import Image, ImageDraw

from . import logos, pictures
from .design import BLUE, GREEN, RED, WHITE, YELLOW, Colour, Design
from .glyphs import line

_STICKERS = (YELLOW, RED, BLUE, GREEN, WHITE, (230, 120, 30), (120, 170, 220))
_MONTHS = ("JAN", "MAR", "APR", "JUL", "AUG", "OCT", "DEC", "1", "5", "11", "12", "07", "15", "16")


def band(plate: Image.Image, design: Design, fonts: dict, rng: Random) -> None:
    """Draw the country band at the left edge, and the second one where the design has it."""
    width, height = plate.size
    wide = round(height * rng.uniform(0.36, 0.46))
    draw = ImageDraw.Draw(plate)
    sides = [0, width - wide] if design.band_right else [0]
    light = design.band_colour == WHITE
    for left in sides:
        colour = plate.getpixel((width // 2, 2)) if light else _near(design.band_colour, rng)
        draw.rectangle((left, 0, left + wide, height), fill=colour)
    mark = (wide // 2, round(height * 0.32))
    if light:
        _shield(draw, (*mark, height * 0.3), rng)
    else:
        _stars(draw, *mark, wide * 0.3, height)
    if design.band.strip():
        ink = (40, 40, 50) if light else (235, 235, 235)
        text = line(rng.choice(fonts["wide"]), design.band.strip(), max(4, round(height * 0.22)))
        text = text.resize((min(text.width, wide - 2), text.height))
        plate.paste(ink, ((wide - text.width) // 2, round(height * 0.65)), text)


def _stars(draw: ImageDraw.ImageDraw, x: float, y: float, radius: float, height: int) -> None:
    size = max(0.6, height * 0.016)
    for dx, dy in _CIRCLE:
        a, b = x + dx * radius, y + dy * radius
        draw.ellipse((a - size, b - size, a + size, b + size), fill=(226, 200, 60))


_CIRCLE = ((0, -1), (0.5, -0.87), (0.87, -0.5), (1, 0), (0.87, 0.5), (0.5, 0.87),
           (0, 1), (-0.5, 0.87), (-0.87, 0.5), (-1, 0), (-0.87, -0.5), (-0.5, -0.87))  # fmt: skip


def seal(plate: Image.Image, box: tuple, kinds: tuple[str, ...], ink: Colour, rng: Random) -> None:
    """Draw what stands between the groups of characters into its box."""
    left, top, right, bottom = box
    x, y, size = (left + right) / 2, (top + bottom) / 2, min(right - left, (bottom - top) * 0.6)
    draw = ImageDraw.Draw(plate)
    kind = rng.choice(kinds)
    if kind in ("seals", "dash_seal"):
        high = (bottom - top) * 0.34
        _disc(draw, x, top + high * 0.7, high * 0.42, rng)
        if kind == "dash_seal":
            draw.rectangle((x - size * 0.4, y - 1, x + size * 0.4, y + high * 0.14), fill=ink)
        _disc(draw, x, bottom - high * 0.7, high * rng.uniform(0.2, 0.42), rng)
    elif kind == "shield":
        _shield(draw, (x, y, size), rng)
    elif kind in ("square", "map"):
        colour = _near(rng.choice(_STICKERS), rng)
        points = [(x + size * rng.uniform(0.25, 0.55) * a, y + size * rng.uniform(0.3, 0.6) * b)
                  for a, b in ((-1, -1), (1, -1), (1, 1), (-1, 1))]  # fmt: skip
        draw.polygon(points, fill=colour)
        if kind == "square":
            draw.line((x - 1, y, x + size * 0.2, y), fill=(60, 40, 40), width=max(1, int(size / 8)))
    elif kind == "dot":
        _disc(draw, x, y, size * 0.2, rng, ink)
    elif kind == "year":
        pictures.year_sticker(plate, box, ink, rng)
    elif kind == "emblem":
        pictures.emblem(plate, box, rng)
    elif kind in _LOGOS:
        _LOGOS[kind](plate, box, ink, rng)


_LOGOS = {"stack": logos.stack, "outline": logos.outline, "star": logos.star, "badge": logos.badge}


def _disc(draw, x: float, y: float, radius: float, rng: Random, colour: Colour | None = None):
    fill = colour or _near(rng.choice(((220, 90, 30), RED, GREEN, (160, 160, 170))), rng)
    draw.ellipse((x - radius, y - radius, x + radius, y + radius), fill=fill)
    if colour is None and radius > 3:
        core = radius * 0.45
        draw.ellipse((x - core, y - core, x + core, y + core), fill=(226, 220, 200))


def _shield(draw: ImageDraw.ImageDraw, place: tuple, rng: Random) -> None:
    x, y, size = place
    half = size * 0.42
    shape = [(x - half, y - half), (x + half, y - half), (x + half, y + half * 0.3),
             (x, y + half * 1.2), (x - half, y + half * 0.3)]  # fmt: skip
    draw.polygon(shape, fill=_near(rng.choice((RED, BLUE, GREEN, YELLOW)), rng))
    tip, y_tip = half * 0.6, y + half * 0.4
    hill = [(x - tip, y_tip), (x + tip, y_tip), (x, y + half * 1.1)]
    draw.polygon(hill, fill=_near(rng.choice((BLUE, RED, WHITE)), rng))
    draw.rectangle((x - half * 0.12, y - half * 0.7, x + half * 0.12, y + half * 0.3), fill=WHITE)


def stickers(plate: Image.Image, fonts: dict, rng: Random) -> None:
    """Stick month and year into upper or lower corners."""
    width, height = plate.size
    for x, y in rng.sample(
        ((0.03, 0.04), (0.84, 0.04), (0.03, 0.8), (0.84, 0.8)), rng.choice((1, 2))
    ):
        wide, high = round(width * rng.uniform(0.1, 0.19)), round(height * rng.uniform(0.13, 0.23))
        left, top = round(x * width), round(y * height)
        ImageDraw.Draw(plate).rectangle(
            (left, top, left + wide, top + high), fill=_near(rng.choice(_STICKERS), rng)
        )
        mark = line(fonts["wide"][0], rng.choice(_MONTHS), max(3, round(high * 0.7)))
        plate.paste((30, 30, 40), (left + max(0, (wide - mark.width) // 2), top + 1), mark)


def screws(plate: Image.Image, heights: tuple[float, ...], rng: Random) -> None:
    """Draw pairs of screws or holes at some of the heights."""
    width, height = plate.size
    draw = ImageDraw.Draw(plate)
    radius = height * rng.uniform(0.018, 0.04)
    inset = rng.uniform(0.16, 0.34)
    for level in heights:
        if rng.random() < 0.25:
            continue
        shade = rng.choice((20, 40, 60, 110, 170))
        long = rng.choice((1.0, 1.0, 1.8))
        for x in (inset * width, (1 - inset) * width):
            y = level * height
            draw.ellipse((x - radius * long, y - radius, x + radius * long, y + radius),
                         fill=(shade, shade, shade))  # fmt: skip


def wire_seal(plate: Image.Image, rng: Random) -> None:
    """Draw a plastic seal on its wire, as old Brazilian plates have."""
    width, height = plate.size
    x, y = width * rng.uniform(0.08, 0.16), height * rng.uniform(0.1, 0.2)
    half = height * rng.uniform(0.05, 0.09)
    draw = ImageDraw.Draw(plate)
    draw.line((x - 2 * half, y + half, x + half, y - half), fill=(40, 40, 40))
    draw.ellipse((x - half * 1.3, y - half, x + half, y + half), fill=_near((190, 40, 36), rng))


def small_print(plate: Image.Image, text: str, place: tuple, colour: Colour, font: str) -> None:
    """Write a line centred at `place` = (y as a share of the height, height as a share)."""
    width, height = plate.size
    mask = line(font, text, max(3, round(place[1] * height)))
    if mask.width > 0.8 * width:
        mask = mask.resize((round(0.8 * width), mask.height), Image.Resampling.BOX)
    plate.paste(colour, ((width - mask.width) // 2, round(place[0] * height)), mask)


def _near(colour: Colour, rng: Random) -> Colour:
    return tuple(
        min(255, max(0, round(c * rng.uniform(0.8, 1.15) + rng.uniform(-8, 8)))) for c in colour
    )
