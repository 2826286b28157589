"""Masks of characters: drawn once per font, cut to their ink, kept."""

from functools import lru_cache

from PIL import Image, ImageDraw, ImageFilter, ImageFont

from . import drawings, strokes

CAP_HEIGHT = 64  # pixels of a mask
_FIRST_ASIAN = "\u3000"
_LINES = {0x06: "٤٦٨", 0x0E: "กขค"}  # by block of 256: what is as high as digits and letters


@lru_cache(maxsize=32768)
def glyph(font_file: str, character: str, weight: int = 0) -> Image.Image:
    """Return an 8-bit mask, CAP_HEIGHT high; `weight` in pixels thickens its strokes.

    `font_file` may be the name of a die of `strokes` or of `drawings`.

    Latin masks, drawings and whole words are cut to their ink; Asian characters keep their square,
    so that kana keep their place in it, others their line.
    """
    if drawings.is_drawing(font_file):
        mask = drawings.draw(font_file, character, CAP_HEIGHT)
    elif strokes.is_die(font_file):
        mask = strokes.draw(font_file, character, CAP_HEIGHT)
    elif character >= _FIRST_ASIAN:
        mask = _square(_font(font_file), character)
    elif not character.isascii() and len(character) == 1:
        mask = _on_line(_font(font_file), character)
    else:
        drawn = _drawn(_font(font_file), character)
        mask = drawn.resize((drawn.width, CAP_HEIGHT), Image.Resampling.BILINEAR)
    if weight > 0:
        return mask.filter(ImageFilter.MaxFilter(2 * weight + 1))
    return mask.filter(ImageFilter.MinFilter(1 - 2 * weight)) if weight else mask


def line(font_file: str, text: str, height: int) -> Image.Image:
    """Return a mask of a whole line of small print, `height` pixels high."""
    mask = _printed(font_file, text)
    width = max(1, round(mask.width * height / max(mask.height, 1)))
    return mask.resize((width, height), Image.Resampling.BOX)


@lru_cache(maxsize=4096)
def _printed(font_file: str, text: str) -> Image.Image:
    return _drawn(_font(font_file), text)


@lru_cache(maxsize=256)
def _font(font_file: str) -> ImageFont.FreeTypeFont:
    _, top, _, bottom = ImageFont.truetype(font_file, 100).getbbox("H")
    return ImageFont.truetype(font_file, max(20, round(100 * CAP_HEIGHT / max(bottom - top, 1))))


def _drawn(font: ImageFont.FreeTypeFont, text: str) -> Image.Image:
    left, top, right, bottom = font.getbbox(text, anchor="ls")
    mask = Image.new("L", (max(1, right - left), max(1, bottom - top)))
    ImageDraw.Draw(mask).text((-left, -top), text, fill=255, font=font, anchor="ls")
    return mask


def _on_line(font: ImageFont.FreeTypeFont, character: str) -> Image.Image:
    """Return a character as wide as its ink, at its height: the Arabic zero is a dot."""
    model = _LINES.get(ord(character) >> 8, "H")
    left, top, right, bottom = font.getbbox(character, anchor="ls")
    _, highest, _, lowest = font.getbbox(model, anchor="ls")
    top, bottom = min(top, highest), max(bottom, lowest)
    mask = Image.new("L", (max(8, right - left), max(8, bottom - top)))
    place = (-left + (mask.width - (right - left)) // 2, -top)
    ImageDraw.Draw(mask).text(place, character, fill=255, font=font, anchor="ls")
    return mask.resize((max(4, round(mask.width * CAP_HEIGHT / mask.height)), CAP_HEIGHT))


def _square(font: ImageFont.FreeTypeFont, character: str) -> Image.Image:
    ink = font.getbbox("国" if character < "가" else "를", anchor="ls")
    side = max(ink[2] - ink[0], ink[3] - ink[1], 8)
    mask = Image.new("L", (side, side))
    ImageDraw.Draw(mask).text((-ink[0], -ink[1]), character, fill=255, font=font, anchor="ls")
    return mask.resize((CAP_HEIGHT, CAP_HEIGHT), Image.Resampling.BILINEAR)
