"""Text that is no plate: shop and road signs, stickers, model names, empty panels."""

from random import Random

from PIL import Image, ImageDraw

from ..plates.design import BLACK, BLUE, GREEN, RED, WHITE, YELLOW, Design
from ..plates.face import Face
from ..plates.glyphs import line

_WORDS = (
    "EXIT", "NORTH", "STOP", "TAXI", "POLICE", "SALE", "OPEN", "HOTEL", "PARKING", "CENTRE",
    "School", "Turbo", "GTI", "320d", "Hybrid", "AWD", "", "Quattro", "Diesel", "Market",
    "Airport", "Bakery", "Garage", "Service", "www.example.com", "Open 24h", "Zone 30", "Rent",
    "", "Tel. 0800 123 456", "Ausfahrt", "Sortie", "Uscita", "Salida", "Centro", "Ring", "Street",
    "Avenue", "km", "12", "Lavage", "Bank", "", "PIZZA", "Fresh", "Fruit", "Ice Cream",
    "Speed Limit", "One Way", "Yield", "Bus", "Express", "Transport", "Logistics", "Food",
)  # fmt: skip
_PANELS = ((WHITE, BLACK), (BLUE, WHITE), (GREEN, WHITE), (RED, WHITE), (YELLOW, BLACK),
           (BLACK, WHITE), ((90, 90, 94), WHITE), (WHITE, RED), (WHITE, BLUE))  # fmt: skip
_NO_PLATE = Design("", "", ("",))


def draw_sign(fonts: dict, rng: Random) -> Face:
    """Draw a panel with none to four rows of words; its text is empty, since it is no plate."""
    ground, ink = rng.choice(_PANELS)
    high = rng.randint(50, 110)
    panel = Image.new("RGB", (round(high * rng.uniform(0.7, 5)), high), ground)
    if rng.random() < 0.4:
        inset = high * rng.uniform(0, 0.08)
        edge = (inset, inset, panel.width - 1 - inset, high - 1 - inset)
        ImageDraw.Draw(panel).rounded_rectangle(edge, high * rng.uniform(0, 0.2), outline=ink)
    rows = rng.choice((0, 1, 1, 2, 2, 3, 4))
    for row in range(rows):
        _write(panel, row, rows, ink, fonts, rng)
    return Face(panel, "", _NO_PLATE)


def _write(panel: Image.Image, row: int, rows: int, ink: tuple, fonts: dict, rng: Random) -> None:
    words = " ".join(rng.choice(_WORDS) for _ in range(rng.choice((1, 2, 2, 3))))
    high = max(4, round(panel.height / rows * rng.uniform(0.4, 0.75)))
    mask = line(rng.choice(fonts[rng.choice(("caption", "wide", "bold"))]), words, high)
    width = min(mask.width, round(panel.width * 0.94))
    mask = mask.resize((max(1, width), high))
    y = round(panel.height * (row + 0.5) / rows - high / 2)
    panel.paste(ink, (rng.randint(0, max(0, panel.width - width)), max(0, y)), mask)
