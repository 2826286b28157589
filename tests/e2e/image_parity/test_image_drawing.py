"""Boxes, strips and texts come out pixel for pixel as Pillow draws them."""

import itertools
import string
from pathlib import Path

import numpy as np
import pytest
from image_programs import Refusal, pixels_of, run_tool
from PIL import Image, ImageDraw, ImageFont

GREEN, BLACK = (0, 255, 0), (0, 0, 0)
FONT = Path("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf")
SIZE = (60, 44)
needs_font = pytest.mark.skipif(not FONT.exists(), reason=f"{FONT} is not installed")


@pytest.fixture
def blank(tmp_path: Path) -> Path:
    path = tmp_path / "blank.png"
    Image.new("RGB", SIZE, (90, 120, 200)).save(path)
    return path


def drawn(path: Path, *commands: str) -> np.ndarray:
    return pixels_of(run_tool("draw_dump", path, text="\n".join(commands))[0])


def basic_font(size: int) -> ImageFont.FreeTypeFont:
    return ImageFont.truetype(str(FONT), size, layout_engine=ImageFont.Layout.BASIC)


def same_rectangle(path: Path, box: tuple[int, int, int, int], command: str) -> bool:
    image = Image.open(path)
    style = {"outline": GREEN, "width": 2} if command == "box" else {"fill": GREEN}
    ImageDraw.Draw(image).rectangle(box, **style)
    return np.array_equal(drawn(path, f"{command} {' '.join(map(str, box))}"), np.asarray(image))


@pytest.mark.parametrize("command", ["box", "fill"])
@pytest.mark.parametrize(
    "box",
    [
        (5, 6, 40, 30),
        (-7, -9, 20, 15),
        (30, 20, 90, 80),
        (-5, -5, 70, 50),
        (-50, -50, -10, -10),
        (70, 50, 90, 90),
        (0, 0, 59, 43),
        (-100000, 10, 100000, 20),
    ],
)
def test_rectangles(blank: Path, command: str, box: tuple[int, int, int, int]) -> None:
    assert same_rectangle(blank, box, command)


@pytest.mark.parametrize("size", list(itertools.product(range(6), range(6))))
def test_rectangles_smaller_than_their_lines(blank: Path, size: tuple[int, int]) -> None:
    assert same_rectangle(blank, (20, 20, 20 + size[0], 20 + size[1]), "box")


@pytest.mark.parametrize("command", ["box", "fill"])
@pytest.mark.parametrize(("box", "axis"), [("9 5 8 9", "x"), ("5 9 9 8", "y")])
def test_backward_rectangles_are_refused(blank: Path, command: str, box: str, axis: str) -> None:
    with pytest.raises(Refusal, match=f"^{axis}1 must be greater than or equal to {axis}0$"):
        drawn(blank, f"{command} {box}")


ASCII = [c for c in string.printable if c.isprintable() and not c.isspace()]
TEXTS = [
    "12AB3456 (0.98)",
    "7XYZ123 (0.61)",
    "AVAWA To LTjf",
    "ÄÖÜß éèç ñ Ł ő",
    "京都 300 あ 12-34 (1.00)",
    "Ж777ХХ99 (0.50)",
    "\U0001f697 (0.10)",
    *("".join(ASCII[i : i + 12]) for i in range(0, len(ASCII), 12)),
    *(f"{a}{b}{a}" for a, b in zip("AVTWYLPFjf1", "VATAoTT.jf7", strict=True)),
]


@needs_font
@pytest.mark.parametrize("size", [16, 11, 40])
def test_text_boxes(blank: Path, size: int) -> None:
    commands = [f"measure {FONT} {size} {text}" for text in TEXTS]
    _, lines = run_tool("draw_dump", blank, text="\n".join(commands))
    boxes = [tuple(map(int, line.split())) for line in lines.splitlines()]
    assert boxes == [basic_font(size).getbbox(text) for text in TEXTS]


@needs_font
@pytest.mark.parametrize("at", [(2, 3), (-6, -4), (40, 30), (0, 43)])
@pytest.mark.parametrize("text", TEXTS)
def test_text_pixels(blank: Path, text: str, at: tuple[int, int]) -> None:
    image = Image.open(blank)
    ImageDraw.Draw(image).text(at, text, fill=BLACK, font=basic_font(16))
    ours = drawn(blank, f"text {at[0]} {at[1]} {FONT} 16 {text}")
    # Releases of FreeType differ by a hair in how they smooth an edge.
    assert np.abs(ours.astype(int) - np.asarray(image)).max() <= 1
