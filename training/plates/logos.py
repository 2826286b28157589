"""What American plates show beside their characters, letters among it that are no text."""

from math import cos, pi, sin
from random import Random

from PIL import Image, ImageDraw

from . import strokes
from .design import BLUE, GREEN, RED, WHITE, YELLOW, Colour

_COLOURS = (YELLOW, RED, BLUE, GREEN, (230, 120, 30), (90, 40, 120), (30, 30, 34), (150, 30, 50))
_STACKS = ("DV", "FF", "NG", "DLR", "PP", "TRK", "VET", "GOV", "CV", "IFTA", "DIS", "EX", "MC",
           "TMP", "FLT", "PCC", "AM", "TR", "PO", "LS", "KE", "ABC")  # fmt: skip


def stack(plate: Image.Image, box: tuple, ink: Colour, rng: Random) -> None:
    """Write two to four small letters one below the other, as plates of a kind have."""
    left, top, right, bottom = box
    word = rng.choice(_STACKS)
    high = (bottom - top) * rng.uniform(0.75, 1.0)
    each = max(3, int(high / len(word) * 0.86))
    y = top + (bottom - top - high) * rng.choice((0.0, 0.5, 1.0))
    die = strokes.die(rng.choice(("die", "bold")), rng)
    for letter in word:
        _write(plate, letter, ((left + right) / 2, y + each / 2), each, (right - left, ink, die))
        y += high / len(word)


def outline(plate: Image.Image, box: tuple, ink: Colour, rng: Random) -> None:
    """Draw a map: a closed line of many corners, filled or not."""
    x, y, size = _middle(box)
    count = rng.randint(6, 14)
    tall, wide = rng.uniform(0.3, 0.6), rng.uniform(0.25, 0.5)
    points = [
        (x + size * wide * cos(2 * pi * i / count) * rng.uniform(0.55, 1.2),
         y + size * tall * sin(2 * pi * i / count) * rng.uniform(0.55, 1.2))
        for i in range(count)
    ]  # fmt: skip
    colour = rng.choice((ink, rng.choice(_COLOURS)))
    if rng.random() < 0.7:
        ImageDraw.Draw(plate).polygon(points, fill=colour)
    else:
        width = max(1, round(size * 0.06))
        ImageDraw.Draw(plate).line([*points, points[0]], fill=colour, width=width)


def star(plate: Image.Image, box: tuple, ink: Colour, rng: Random) -> None:
    """Draw a star, alone or on a disc."""
    x, y, size = _middle(box)
    radius = size * rng.uniform(0.2, 0.5)
    draw = ImageDraw.Draw(plate)
    colour = rng.choice((ink, rng.choice(_COLOURS)))
    if rng.random() < 0.3:
        draw.ellipse((x - radius, y - radius, x + radius, y + radius), fill=colour)
        colour = WHITE
    points = [
        (x + reach * sin(pi * i / 5), y - reach * cos(pi * i / 5))
        for i, reach in enumerate((radius, radius * 0.42) * 5)
    ]
    draw.polygon(points, fill=colour)


def badge(plate: Image.Image, box: tuple, ink: Colour, rng: Random) -> None:
    """Draw a club's or a school's mark: a round or square patch, at times with one letter."""
    left, top, right, bottom = box
    x, y, _ = _middle(box)
    half = min((right - left) * 0.46, (bottom - top) * rng.uniform(0.35, 0.6))
    tall = half * rng.uniform(0.8, 1.2)
    area = (x - half, y - tall, x + half, y + tall)
    draw = ImageDraw.Draw(plate)
    colour = rng.choice(_COLOURS)
    shape = rng.choice((draw.ellipse, draw.rectangle, draw.ellipse))
    shape(area, fill=colour, outline=rng.choice((colour, ink, WHITE)))
    for _ in range(rng.choice((0, 1, 3))):
        dx, dy = (rng.uniform(-0.5, 0.5) * half for _ in range(2))
        spot = (x + dx - half * 0.3, y + dy - half * 0.3, x + dx + half * 0.3, y + dy + half * 0.3)
        draw.ellipse(spot, fill=rng.choice(_COLOURS))
    if rng.random() < 0.45:
        letter, high = rng.choice("ABCDGHMNOPSTUVW"), max(4, int(tall * rng.uniform(0.8, 1.3)))
        die = strokes.die("bold", rng)
        _write(plate, letter, (x, y), high, (half * 1.6, rng.choice((WHITE, YELLOW)), die))


def _middle(box: tuple) -> tuple[float, float, float]:
    left, top, right, bottom = box
    return (left + right) / 2, (top + bottom) / 2, min(right - left, bottom - top)


def _write(plate: Image.Image, letter: str, at: tuple, high: int, look: tuple) -> None:
    """Write one letter centred at a place; `look`: its widest, its ink, its die."""
    widest, ink, die = look
    mask = strokes.draw(die, letter, high)
    if mask.width > widest * 0.8:
        mask = mask.resize((max(1, int(widest * 0.8)), high), Image.Resampling.BOX)
    plate.paste(ink, (round(at[0] - mask.width / 2), round(at[1] - high / 2)), mask)
