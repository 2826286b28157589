"""Masks of characters: drawn once per font, cut to their ink, kept."""

from functools import lru_cache

from PIL import Image, ImageDraw, ImageFilter, ImageFont

from . import strokes

CAP_HEIGHT = 64  # pixels of a mask


@lru_cache(maxsize=32768)
def glyph(font_file: str, character: str, weight: int = 0) -> Image.Image:
    """Return an 8-bit mask, CAP_HEIGHT high; `weight` in pixels thickens its strokes.

    `font_file` may be the name of a die of `strokes`.

    Latin masks are cut to their ink; other scripts keep their square, so that kana keep their
    place in it, and their weight, since they are dense enough.
    """
    if strokes.is_die(font_file):
        mask = strokes.draw(font_file, character, CAP_HEIGHT)
    elif not character.isascii():
        return _square(_font(font_file), character)
    else:
        drawn = _drawn(_font(font_file), character)
        mask = drawn.resize((drawn.width, CAP_HEIGHT), Image.Resampling.BILINEAR)
    if weight > 0:
        return mask.filter(ImageFilter.MaxFilter(2 * weight + 1))
    return mask.filter(ImageFilter.MinFilter(1 - 2 * weight)) if weight else mask


@lru_cache(maxsize=1024)
def line(font_file: str, text: str, height: int) -> Image.Image:
    """Return a mask of a whole line of small print, `height` pixels high."""
    mask = _drawn(_font(font_file), text)
    width = max(1, round(mask.width * height / max(mask.height, 1)))
    return mask.resize((width, height), Image.Resampling.BOX)


@lru_cache(maxsize=256)
def _font(font_file: str) -> ImageFont.FreeTypeFont:
    _, top, _, bottom = ImageFont.truetype(font_file, 100).getbbox("H")
    return ImageFont.truetype(font_file, max(20, round(100 * CAP_HEIGHT / max(bottom - top, 1))))


def _drawn(font: ImageFont.FreeTypeFont, text: str) -> Image.Image:
    left, top, right, bottom = font.getbbox(text, anchor="ls")
    mask = Image.new("L", (max(1, right - left), max(1, bottom - top)))
    ImageDraw.Draw(mask).text((-left, -top), text, fill=255, font=font, anchor="ls")
    return mask


def _square(font: ImageFont.FreeTypeFont, character: str) -> Image.Image:
    ink = font.getbbox("国" if character < "가" else "를", anchor="ls")
    side = max(ink[2] - ink[0], ink[3] - ink[1], 8)
    mask = Image.new("L", (side, side))
    ImageDraw.Draw(mask).text((-ink[0], -ink[1]), character, fill=255, font=font, anchor="ls")
    return mask.resize((CAP_HEIGHT, CAP_HEIGHT), Image.Resampling.BILINEAR)
