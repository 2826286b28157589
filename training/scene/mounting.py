"""Mounts a plate's face: holder frame, dealer's text, screws, the car around it."""

from random import Random

from PIL import Image, ImageDraw, ImageFilter

from ..plates.face import Face
from ..plates.glyphs import line

_DEALERS = (
    "AUTO MOBIL s.r.o.", "ELIAS MOTORS, INC.", "THE FORD STORE", "LOU FUSZ", "CARTEC MB",
    "MACHAIKDCJ.COM", "(818) 886-5187", "EL SOL MOTORS", "AUTOHAUS BERG", "www.autobox.eu",
    "ČESKÁ REPUBLIKA", "SLOVENSKÁ REPUBLIKA", "KEYES TOYOTA", "ENGINEERS", "ALUMNI", "HONDA",
    "RACING TEAM", "Concessionaria", "GARAGE DU NORD", "TOYOTA CITY", "Bommarito", "1-800-555-0142",
)  # fmt: skip
_BODIES = (
    (24, 24, 28), (40, 42, 48), (90, 92, 96), (150, 152, 156), (200, 202, 204), (226, 226, 224),
    (130, 24, 28), (30, 44, 92), (20, 60, 60), (196, 150, 40), (80, 60, 50), (12, 12, 14),
)  # fmt: skip
MARGIN = (0.22, 0.5)  # car around the plate, as shares of its width and its height


def mount(face: Face, fonts: dict, rng: Random, photo: Image.Image | None = None, around=MARGIN):
    """Return (RGB picture of the plate on a car, its box left, top, right, bottom in pixels).

    `photo` gives the surroundings when there is one; `around` is how much is seen of them.
    """
    wide, high = face.picture.size
    left, top = round(around[0] * wide), round(around[1] * high)
    size = (wide + 2 * left, high + 2 * top)
    scene = photo.resize(size) if photo else _car(size, rng)
    box = (left, top, left + wide, top + high)
    draw = ImageDraw.Draw(scene)
    if rng.random() < 0.3:
        _shadow_of_edge(draw, box, high, rng)
    if rng.random() < 0.6:
        _holder_behind(scene, box, fonts, rng)
    scene.paste(face.picture, box[:2], _rounded(face.picture.size, rng))
    if rng.random() < (0.5 if face.design.aspect < 2.3 else 0.1):
        _frame_over(scene, box, face.design.text_box, fonts, rng)
    return scene, box


def _car(size: tuple[int, int], rng: Random) -> Image.Image:
    body = rng.choice(_BODIES)
    shades = [rng.uniform(0.3, 1.15) for _ in range(rng.choice((2, 4, 7)))]
    column = Image.new("RGB", (1, len(shades)))
    column.putdata([tuple(min(255, round(c * shade)) for c in body) for shade in shades])
    how = rng.choice(
        (Image.Resampling.NEAREST, Image.Resampling.BICUBIC, Image.Resampling.BILINEAR)
    )
    scene = column.resize(size, how)
    draw = ImageDraw.Draw(scene)
    for _ in range(rng.choice((0, 0, 2, 8))):
        y, shade = rng.randrange(size[1]), rng.randrange(90)
        draw.line(
            (0, y, size[0], y + rng.randint(-4, 4)), fill=(shade,) * 3, width=rng.randint(1, 9)
        )
    for _ in range(rng.choice((0, 0, 1, 3))):
        x, y, r = rng.randrange(size[0]), rng.randrange(size[1]), rng.randint(3, 40)
        colour = rng.choice(((150, 20, 20), (230, 230, 230), (20, 20, 20), (220, 120, 30)))
        draw.ellipse((x - 2 * r, y - r, x + 2 * r, y + r), fill=colour)
    return scene


def _shadow_of_edge(draw: ImageDraw.ImageDraw, box: tuple, high: int, rng: Random) -> None:
    left, top, right, bottom = box
    out = high * rng.uniform(0.03, 0.12)
    draw.rectangle((left - out / 2, top + out / 2, right + out, bottom + out), fill=(10, 10, 12))


def _holder_behind(scene: Image.Image, box: tuple, fonts: dict, rng: Random) -> None:
    left, top, right, bottom = box
    high = bottom - top
    side, below = high * rng.uniform(0.01, 0.1), high * rng.uniform(0.03, 0.24)
    shade = rng.choice((14, 22, 36, 60, 170))
    frame = (left - side, top - side, right + side, bottom + below)
    ImageDraw.Draw(scene).rounded_rectangle(frame, high * 0.06, fill=(shade, shade, shade + 2))
    if below > 0.1 * high:
        _write(scene, (left, bottom + 1, right, round(bottom + below) - 1), fonts, rng, shade)


def _frame_over(scene: Image.Image, box: tuple, text: tuple, fonts: dict, rng: Random) -> None:
    """Lay a frame over the plate's edges but not its characters, as dealers in America do."""
    left, top, right, bottom = box
    high = bottom - top
    shade = rng.choice((16, 24, 40, 120, 190))
    draw = ImageDraw.Draw(scene)
    over = high * min(rng.uniform(0.02, 0.14), text[1])
    under = high * min(rng.uniform(0.03, 0.15), 1 - text[3])
    side = high * rng.uniform(0.01, 0.06)
    out = high * rng.uniform(0.02, rng.choice((0.1, 0.22)))
    colour = (shade, shade, min(255, shade + 3))
    for area in (
        (left - out, top - out, right + out, top + over),
        (left - out, bottom - under, right + out, bottom + out),
        (left - out, top - out, left + side, bottom + out),
        (right - side, top - out, right + out, bottom + out),
    ):
        draw.rectangle(area, fill=colour)
    for area in ((left, top - out, right, top + over), (left, bottom - under, right, bottom + out)):
        if rng.random() < 0.6:
            _write(scene, tuple(map(round, area)), fonts, rng, shade)


def _write(scene: Image.Image, area: tuple, fonts: dict, rng: Random, shade: int) -> None:
    left, top, right, bottom = area
    high = max(3, round((bottom - top) * 0.65))
    mask = line(rng.choice(fonts["caption"]), rng.choice(_DEALERS), high)
    mask = mask.crop((0, 0, min(mask.width, right - left), high))
    ink = (220, 220, 220) if shade < 90 else (20, 20, 24)
    x = left + max(0, (right - left - mask.width) // 2)
    scene.paste(ink, (x, top + max(1, (bottom - top - high) // 2)), mask)


def _rounded(size: tuple[int, int], rng: Random) -> Image.Image:
    mask = Image.new("L", size)
    radius = size[1] * rng.uniform(0.0, 0.13)
    ImageDraw.Draw(mask).rounded_rectangle((0, 0, size[0] - 1, size[1] - 1), radius, fill=255)
    return mask.filter(ImageFilter.BoxBlur(0.6))
