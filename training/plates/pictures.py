"""Pictures on a plate: soft grounds, drawings behind the characters, emblems and year stickers."""

from random import Random

from PIL import Image, ImageDraw, ImageFilter

from .design import BLUE, GREEN, RED, WHITE, YELLOW, Colour

_BRIGHT = (YELLOW, RED, BLUE, GREEN, WHITE, (230, 120, 30), (120, 170, 220))
_HUES = ((-50, -20, 20), (20, -10, -40), (-30, 10, -20))


def soft_ground(size: tuple[int, int], colour: Colour, rng: Random) -> Image.Image:
    """Return a soft gradient or soft spots, as states print behind the characters."""
    grid = rng.choice(((1, 2), (1, 3), (2, 3), (4, 3), (6, 4)))
    count = grid[0] * grid[1]
    small = Image.new("RGB", grid)
    small.putdata([_tint(colour, rng) if rng.random() < 0.6 else colour for _ in range(count)])
    return small.resize(size, Image.Resampling.BICUBIC)


def drawing(plate: Image.Image, rng: Random) -> None:
    """Print a landscape or a figure faintly over the plate: shapes with soft edges."""
    layer = plate.copy()
    wide, high = plate.size
    for _ in range(rng.randint(2, 7)):
        x, y = rng.random() * wide, high * rng.uniform(0.3, 1)
        _shape(
            layer, (x, y, high * rng.uniform(0.08, 0.4)), _tint(layer.getpixel((2, 2)), rng), rng
        )
    layer = layer.filter(ImageFilter.GaussianBlur(rng.uniform(0.3, 2)))
    plate.paste(Image.blend(plate, layer, rng.uniform(0.3, 0.9)))


def emblem(plate: Image.Image, box: tuple, rng: Random) -> None:
    """Draw a figure of a few shapes into a box, in any colours or hardly visible ones."""
    left, top, right, bottom = box
    size = min(right - left, bottom - top) / 2
    ground = plate.getpixel((min(plate.width - 1, max(0, int(left))), int((top + bottom) / 2)))
    faint = rng.random() < 0.5
    for _ in range(rng.randint(1, 5)):
        x = rng.uniform(left + size * 0.5, max(left + size * 0.5, right - size * 0.5))
        y = rng.uniform(top + size * 0.6, bottom - size * 0.6)
        colour = _tint(ground, rng) if faint else rng.choice(_BRIGHT)
        _shape(plate, (x, y, size * rng.uniform(0.3, 0.8)), colour, rng)


def year_sticker(plate: Image.Image, box: tuple, ink: Colour, rng: Random) -> None:
    """Stick the year between the characters, as dark as they are and nearly as large."""
    left, top, right, bottom = box
    x, y = (left + right) / 2, (top + bottom) / 2 + (bottom - top) * rng.uniform(-0.1, 0.25)
    half, rise = (right - left) * rng.uniform(0.25, 0.5), (bottom - top) * rng.uniform(0.12, 0.3)
    grid = rng.choice(((1, 1), (2, 2), (2, 3), (3, 4)))
    patch = Image.new("RGB", grid)
    colours = (ink, ink, *rng.sample(_BRIGHT, 2))
    patch.putdata([_mixed(rng.choice(colours), ink, rng) for _ in range(grid[0] * grid[1])])
    how = rng.choice((Image.Resampling.NEAREST, Image.Resampling.BICUBIC))
    size = (max(2, round(2 * half)), max(2, round(2 * rise)))
    plate.paste(patch.resize(size, how), (round(x - half), round(y - rise)))


def _shape(plate: Image.Image, place: tuple, colour: Colour, rng: Random) -> None:
    x, y, size = place
    draw = ImageDraw.Draw(plate)
    points = [(x + size * rng.uniform(-1, 1), y + size * rng.uniform(-1, 1)) for _ in range(5)]
    kind = rng.choice(("polygon", "polygon", "ellipse", "line"))
    if kind == "ellipse":
        across, down = size * rng.uniform(0.2, 1), size * rng.uniform(0.2, 1)
        draw.ellipse((x - across, y - down, x + across, y + down), fill=colour)
    elif kind == "line":
        draw.line(points[:3], fill=colour, width=max(1, round(size * rng.uniform(0.05, 0.3))))
    else:
        draw.polygon(points[: rng.choice((3, 4, 5))], fill=colour)


def _tint(colour: Colour, rng: Random) -> Colour:
    tone = rng.uniform(-90, 10)
    return _clipped(tone + c + shift for c, shift in zip(colour, rng.choice(_HUES), strict=True))


def _mixed(colour: Colour, other: Colour, rng: Random) -> Colour:
    share = rng.uniform(0, 0.6)
    return _clipped(c + share * (o - c) for c, o in zip(colour, other, strict=True))


def _clipped(values) -> Colour:
    return tuple(min(255, max(0, round(value))) for value in values)
