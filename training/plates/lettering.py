"""Sets rows of signs into a text box: one mask of all ink, where characters and seals are."""

from dataclasses import dataclass, field
from random import Random

from PIL import Image, ImageDraw

from . import drawings, strokes
from .design import Design
from .glyphs import CAP_HEIGHT, glyph
from .text import Sign

_WIDTHS = {
    "gap": 0.42,
    "dash": 0.42,
    "dot": 0.3,
    "seal": 0.62,
    "logo": 1.2,
    "bar": 0.4,
}  # in row heights
_MINOR = 0.7  # height as a share of the largest characters' below which one is minor
_STROKES = 0.45  # share of plates whose letters no font has
_OFFICIAL = 0.7  # share of plates in official drawings, where there are some
_SCRIPT_WEIGHTS = (0, 0, 1, 1, 2)
_WEIGHTS = (0, 0, 0, 1, 1, 2, 3, -1)  # pixels by which strokes are thicker in a glyph's mask


@dataclass(frozen=True)
class Mark:
    """A character that belongs to the text: its box (left, top, right, bottom) in pixels.

    `minor` ones are much smaller than the others, as Japan's upper row, and get lost first.
    """

    text: str
    box: tuple[float, float, float, float]
    minor: bool = False


@dataclass
class Lettering:
    """`ink` is as large as the plate; `seals` are boxes (left, top, right, bottom) in pixels."""

    ink: Image.Image
    seals: list[tuple[int, int, int, int]]
    marks: list[Mark] = field(default_factory=list)


@dataclass(frozen=True)
class _Style:
    official: str  # drawings, before the others where they have a character
    latin: str
    script: str
    spacing: float
    stretch: float  # largest width of a character, as a share of its own
    weight: int
    script_width: float
    script_weight: int


def set_rows(
    design: Design, rows: list[list[Sign]], size: tuple[int, int], fonts: dict, rng: Random
) -> Lettering:
    """Set the rows one below the other into the design's text box on a plate of `size` pixels."""
    style = _style(design, fonts, rng)
    result = Lettering(Image.new("L", size), [])
    left, top, right, bottom = (
        share * length for share, length in zip(design.text_box, size * 2, strict=True)
    )
    if rng.random() < 0.15:  # small letters on a large plate
        inset = rng.uniform(0.05, 0.2) * (bottom - top)
        top, bottom = top + inset, bottom - inset
    gap = (bottom - top) * (1 - sum(design.rows)) / max(len(rows) - 1, 1)
    if len(rows) > 1 and gap <= 0:
        gap = 0.06 * (bottom - top)
    usable = (bottom - top) - gap * (len(rows) - 1)
    shares = design.rows if len(design.rows) == len(rows) else (1 / len(rows),) * len(rows)
    for row, share in zip(rows, shares, strict=True):
        height = usable * share / sum(shares)
        size = share / max(shares)
        _set_row(result, row, style, (left, top, right, top + height), size, rng)
        top += height + gap
    return result


def _style(design: Design, fonts: dict, rng: Random) -> _Style:
    drawn = rng.random() < _STROKES
    latin = strokes.die(design.fonts, rng) if drawn else rng.choice(fonts[design.fonts])
    folders = fonts.get("drawings", ()) if design.drawings else ()
    official = ""
    if folders and rng.random() < _OFFICIAL:
        official = drawings.drawing(rng.choice(folders), rng.choice(design.drawings))
    return _Style(
        official,
        latin,
        rng.choice(fonts[design.script]),
        rng.uniform(0.1, 0.26) if rng.random() < 0.75 else rng.uniform(0.0, 0.1),
        rng.choice((rng.uniform(0.8, 1.1), rng.uniform(1.0, 1.6))),
        rng.choice((0, 0, 0, 1, -1) if drawn else _WEIGHTS),
        design.script_width * (1.0 if design.script_width == 1 else rng.uniform(0.88, 1.15)),
        rng.choice(_SCRIPT_WEIGHTS) if design.script == "hanzi" else 0,
    )


def _set_row(
    result: Lettering, row: list[Sign], style: _Style, box: tuple, size: float, rng: Random
) -> None:
    """Set a row into its box; `size` is its height as a share of the largest row's."""
    left, top, right, bottom = box
    height = bottom - top
    advances = [_advance(sign, style) * height for sign in row]
    room = (right - left) / max(sum(advances), 1)
    squeeze = min(style.stretch, room)
    spread = min(room / squeeze, rng.uniform(1.0, 1.35))  # space between, where there is room
    x = left + rng.choice((0.5, 0.5, rng.random())) * (room - squeeze * spread) * sum(advances)
    for sign, advance in zip(row, advances, strict=True):
        width, extra = squeeze * advance, squeeze * advance * (spread - 1) / 2
        place = (x + extra, top, x + extra + width, bottom)
        _set_sign(result, sign, style, place, rng)
        if sign.text:
            result.marks.append(Mark(sign.text, _reach(sign, place), size * sign.scale < _MINOR))
        x += width + 2 * extra


def _advance(sign: Sign, style: _Style) -> float:
    if sign.kind in _WIDTHS:
        return _WIDTHS[sign.kind]
    own = style.script_width if _is_script(sign, style) else 1.0
    if sign.kind == "pile":
        return 0.55 + style.spacing
    return sign.scale * (own * _mask(sign.char, style).width / CAP_HEIGHT + style.spacing)


def _is_script(sign: Sign, style: _Style) -> bool:
    return not sign.char.isascii() and not drawings.shows(style.official, sign.char)


def _mask(char: str, style: _Style) -> Image.Image:
    if style.official and drawings.shows(style.official, char):
        return glyph(style.official, char)
    if char.isascii():
        return glyph(style.latin, char, style.weight)
    return glyph(style.script, char, style.script_weight)


def _set_sign(result: Lettering, sign: Sign, style: _Style, box: tuple, rng: Random) -> None:
    left, top, right, bottom = box
    height = bottom - top
    if sign.kind == "char":
        space = style.spacing * sign.scale * (right - left) / max(_advance(sign, style), 0.1)
        _set_char(result, sign, style, (left + space / 2, top, right - space / 2, bottom))
    elif sign.kind == "pile":
        for i, char in enumerate(sign.char):
            y = top + i * height / len(sign.char)
            part = (left, y, right, y + 0.94 * height / len(sign.char))
            _set_char(result, Sign("char", char), style, part)
    elif sign.kind in ("seal", "logo"):
        result.seals.append((round(left), round(top), round(right), round(bottom)))
    elif sign.kind != "gap":
        _set_stroke(ImageDraw.Draw(result.ink), sign.kind, box, height * rng.uniform(0.08, 0.14))


def _set_char(result: Lettering, sign: Sign, style: _Style, box: tuple) -> None:
    left, top, right, bottom = _reach(sign, box)
    high = max(2, round(bottom - top))
    wide = max(1, round(right - left))
    mask = _mask(sign.char, style).resize((wide, high), Image.Resampling.BOX)
    result.ink.paste(255, (round(left), round(top)), mask)


def _reach(sign: Sign, box: tuple) -> tuple[float, float, float, float]:
    """Return the part of a sign's box that its scale leaves: at the foot, small ones above it."""
    left, top, right, bottom = box
    high = (bottom - top) * sign.scale
    y = top + ((bottom - top) - high) * (1.0 if sign.scale > 0.6 else 0.6)
    return left, y, right, y + high


def _set_stroke(draw: ImageDraw.ImageDraw, kind: str, box: tuple, thick: float) -> None:
    left, top, right, bottom = box
    x, y = (left + right) / 2, (top + bottom) / 2
    half = (right - left) * 0.32
    if kind == "dash":
        draw.rectangle((x - half, y - thick / 2, x + half, y + thick / 2), fill=255)
    elif kind == "dot":
        draw.ellipse((x - thick * 0.7, y - thick * 0.7, x + thick * 0.7, y + thick * 0.7), fill=255)
    else:
        draw.line((x, top, x, bottom), fill=255, width=max(1, round(thick / 3)))
