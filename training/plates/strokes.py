"""Lettering of our own, drawn with strokes: the straight, narrow and boxy dies that no font has.

A die is named by a kind and a number; the number decides its proportions and the forms of its
letters, so that the same name draws the same letters everywhere.
"""

from dataclasses import dataclass
from functools import lru_cache
from math import hypot
from random import Random

from PIL import Image, ImageDraw

DIES = 160  # numbers per kind
_PREFIX = "strokes"
_OVER = 4  # drawn so much larger, then averaged

# Widths and strokes as shares of the height: (narrowest, widest), (thinnest, thickest).
_KINDS = {
    "die": ((0.38, 0.56), (0.1, 0.17)),
    "din": ((0.42, 0.6), (0.11, 0.17)),
    "bold": ((0.42, 0.62), (0.15, 0.21)),
    "wide": ((0.52, 0.78), (0.12, 0.19)),
    "cn": ((0.44, 0.62), (0.11, 0.17)),
}

# Strokes on a grid of 8 x 8, each point as x and y; letters stand for a die's own measures.
# "!" keeps a corner sharp, "@" closes a stroke, "|" separates forms of which a die has one.
_FORMS = {
    "A": "08 !40 88,2a 6a|08 !30 !50 88,2a 6a|08 !40 88,2a 6a",
    "B": "@!00 70 7n !0n,@!0n 8n 88 !08", "C": "8t 80 00 08 88 8u", "D": "@!00 80 88 !08",
    "E": "80 !00 !08 88,0n 7n", "F": "80 !00 08,0n 7n", "G": "8t 80 00 08 88 !8a 5a",
    "H": "00 08,80 88,0n 8n", "I": "40 48|40 48|00 80,40 48,08 88",
    "J": "80 88 08 0u|80 88 08 0u|30 !80 88 08 0u", "K": "00 08,80 0n,2n 88|00 08,80 0a,33 88",
    "L": "00 !08 88", "M": "08 !00 !4m !80 88", "N": "08 !00 !88 80", "O": "@00 80 88 08",
    "P": "08 !00 80 8a 0a", "Q": "@00 80 88 08,55 88|@00 80 87 07,46 48|@00 80 87 07,56 68",
    "R": "08 !00 80 8n 0n,4n 88",
    "S": "8t 80 00 0n 8n 88 08 0u|8t 80 00 03 85 88 08 0u",
    "T": "00 80,40 48|00 80,40 48|00 80,40 48|0r !00 !80 8r,40 48,28 68",
    "U": "00 08 88 80", "V": "00 !48 80", "W": "00 !w8 !4p !v8 80", "X": "00 88,80 08",
    "Y": "00 !4a 80,4a 48|00 !43 80,43 48", "Z": "00 !80 !08 88",
    "0": "@00 80 88 08", "1": "40 48|12 !50 58|12 !50 58|12 !40 48,18 78",
    "2": "0t 00 80 8a !08 88|0t 00 80 83 !08 88", "3": "0t 00 80 8n 3n,3n 8n 88 08 0u|"
    "0t 00 80 8n 3n,3n 8n 88 08 0u|00 !80 !43 83 88 08 0u",
    "4": "68 !60 !06 86|30 !0a 8a,63 68|58 !50 !0a 8a", "5": "80 !00 !03 83 88 08 0u",
    "6": "8t 80 00 08 88 8n 0n|70 03 08 88 84 04", "7": "00 !80 38|00 !80 28|00 !80 8t 38",
    "8": "@00 80 8n 0n,@0n 8n 88 08", "9": "0u 08 88 80 00 0n 8n|18 85 80 00 04 84",
}  # fmt: skip

_THINNER = {"M": 0.82, "W": 0.78, "N": 0.92, "K": 0.95}  # strokes of crowded letters


@dataclass(frozen=True)
class _Die:
    """`measures` are places on the grid by letter; lengths are shares of the height."""

    width: float
    stroke: float
    radius: float  # of round corners, as a share of the width
    round_ends: bool
    measures: dict[str, float]
    forms: dict[str, str]
    widths: dict[str, float]  # of single characters, as shares of `width`


def die(kind: str, rng: Random) -> str:
    """Return the name of a die of the kind."""
    return f"{_PREFIX} {kind if kind in _KINDS else 'din'} {rng.randrange(DIES)}"


def is_die(name: str) -> bool:
    """Tell whether a font's name is a die's."""
    return name.startswith(_PREFIX)


def draw(name: str, character: str, height: int) -> Image.Image:
    """Return an 8-bit mask of one of A-Z and 0-9, cut to its ink, `height` pixels high."""
    die = _die(name)
    high = height * _OVER
    thick = die.stroke * high * _THINNER.get(character, 1.0)
    wide = max(thick, die.width * die.widths.get(character, 1.0) * high)
    mask = Image.new("L", (round(wide), high))
    pen = ImageDraw.Draw(mask)
    for path in die.forms[character].split(","):
        points = _placed(path, die, (wide - thick, high - thick), thick / 2)
        pen.line(points, fill=255, width=round(thick), joint="curve")
        for end, before in () if path.startswith("@") else (points[:2], points[:-3:-1]):
            _finish(pen, end, before, thick / 2, die.round_ends)
    left, _, right, _ = mask.getbbox()
    ink = mask.crop((left, 0, right, high))
    return ink.resize((max(1, round(ink.width / _OVER)), height), Image.Resampling.BOX)


def _finish(pen: ImageDraw.ImageDraw, end: tuple, before: tuple, half: float, is_round: bool):
    """Lengthen a stroke by half its thickness, with a round or a square end."""
    x, y = end
    if is_round:
        pen.ellipse((x - half, y - half, x + half, y + half), fill=255)
        return
    away = hypot(x - before[0], y - before[1]) or 1.0
    dx, dy = (half * (a - b) / away for a, b in zip(end, before, strict=True))
    pen.line((x, y, x + dx, y + dy), fill=255, width=round(2 * half))


@lru_cache(maxsize=1024)
def _die(name: str) -> _Die:
    rng = Random(name)
    widths, strokes = _KINDS[name.split()[1]]
    peak = rng.choice((0.0, rng.uniform(2, 4), rng.uniform(2.5, 4.5)))
    foot = rng.uniform(0.6, 2.2)
    measures = {
        "n": rng.uniform(3.6, 4.3), "a": rng.uniform(4.4, 5.6), "m": rng.choice((8, 6, 5, 4, 3.5)),
        "p": peak, "w": foot, "v": 8 - foot, "t": rng.uniform(1.3, 2.6), "u": rng.uniform(5.4, 6.7),
        "r": rng.uniform(0.7, 1.6),
    }  # fmt: skip
    forms = {character: rng.choice(form.split("|")) for character, form in _FORMS.items()}
    broad = rng.choice((1.05, rng.uniform(1.05, 1.35)))
    serifs = "," in forms["I"]
    special = {"I": rng.uniform(0.6, 0.9) if serifs else 0.0, "M": broad, "W": broad,
               "1": rng.uniform(0.6, 0.9) if " " in forms["1"][5:] else 0.0,
               "0": rng.choice((1.0, 1.0, 0.85)), "J": rng.choice((1.0, 0.85))}  # fmt: skip
    return _Die(rng.uniform(*widths), rng.uniform(*strokes), rng.uniform(0.12, 0.55),
                rng.random() < 0.4, measures, forms, special)  # fmt: skip


def _placed(path: str, die: _Die, size: tuple[float, float], inset: float) -> list:
    """Return the points of a stroke in pixels, its corners rounded."""
    closed = path.startswith("@")
    marks = path.lstrip("@").split()
    corners = [
        (*(inset + _at(sign, die) * side for sign, side in zip(mark[-2:], size, strict=True)),
         mark.startswith("!")) for mark in marks
    ]  # fmt: skip
    if not closed:
        middle = [_turn(*corners[i - 1 : i + 2], die.radius * size[0])
                  for i in range(1, len(corners) - 1)]  # fmt: skip
        return [corners[0][:2], *(p for turn in middle for p in turn), corners[-1][:2]]
    ring = [corners[-1], *corners, corners[0]]
    turns = [_turn(*ring[i - 1 : i + 2], die.radius * size[0]) for i in range(1, len(ring) - 1)]
    points = [p for turn in turns for p in turn]
    return [*points, points[0], points[1]]


def _at(sign: str, die: _Die) -> float:
    return (int(sign) if sign.isdigit() else die.measures[sign]) / 8


def _turn(before: tuple, corner: tuple, after: tuple, radius: float) -> list:
    """Return the points of one corner: itself when sharp, else a curve inside it."""
    x, y, sharp = corner
    if sharp:
        return [(x, y)]
    begin, end = (_towards(corner, other, radius) for other in (before, after))
    return [_curve(begin, (x, y), end, step / 8) for step in range(9)]


def _towards(corner: tuple, other: tuple, radius: float) -> tuple[float, float]:
    away = hypot(other[0] - corner[0], other[1] - corner[1])
    share = min(0.5, radius / max(away, 1e-6))
    return tuple(c + share * (o - c) for c, o in zip(corner[:2], other[:2], strict=True))


def _curve(begin: tuple, corner: tuple, end: tuple, at: float) -> tuple[float, float]:
    """Return a point between a circle's arc and its corner, as pressed letters have."""
    one, two, three = (1 - at) ** 2, 1.6 * at * (1 - at), at**2
    total = one + two + three
    return tuple(
        (one * b + two * c + three * e) / total for b, c, e in zip(begin, corner, end, strict=True)
    )
