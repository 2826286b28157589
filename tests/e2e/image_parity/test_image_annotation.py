"""Annotated copies are, pixel for pixel, what Pillow draws from the same records."""

import json
from pathlib import Path
from typing import Any

import numpy as np
import pytest
from image_programs import Refusal, pixels_of, run_tool
from PIL import Image, ImageDraw, ImageFont

GREEN, BLACK = (0, 255, 0), (0, 0, 0)
FONT = Path("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf")
Record = dict[str, Any]


def plate(bbox: list[Any], text: str = "12AB3456", confidence: float = 0.975) -> Record:
    return {"ocr_text": text, "ocr_conf": confidence, "bbox": bbox, "bbox_conf": 0.5}


def annotate(path: Path, records: list[Record]) -> np.ndarray:
    return pixels_of(run_tool("annotate_dump", path, text=json.dumps(records))[0])


def drawn_by_pillow(path: Path, records: list[Record]) -> np.ndarray:
    image = Image.open(path).convert("RGB")
    draw = ImageDraw.Draw(image)
    font = ImageFont.truetype(str(FONT), 16, layout_engine=ImageFont.Layout.BASIC)
    for record in records:
        x1, y1, x2, y2 = (int(edge) for edge in record["bbox"][:4])
        draw.rectangle((x1, y1, x2, y2), outline=GREEN, width=2)
        label = f"{record.get('ocr_text', 'N/A')} ({record.get('ocr_conf', 0.0):.2f})"
        left, top, right, bottom = font.getbbox(label)
        width, height = right - left, bottom - top
        edge = y1 - 10 if y1 - 10 > height else y1 + height + 10
        draw.rectangle((x1, edge - height - 5, x1 + width, edge + 5), fill=GREEN)
        draw.text((x1, edge - height), label, fill=BLACK, font=font)
    return np.asarray(image)


@pytest.fixture
def scene(photo: Image.Image, tmp_path: Path) -> Path:
    path = tmp_path / "scene.png"
    photo.resize((320, 200)).save(path)
    return path


CASES = {
    "none": [],
    "label above": [plate([40, 90, 200, 140])],
    "label inside": [plate([40, 5, 200, 60])],
    "just too little room": [plate([40, 24, 200, 60])],
    "just enough room": [plate([40, 25, 200, 60])],
    "reals": [plate([40.7, 90.2, 200.9, 140.5])],
    "cut at the right": [plate([280, 90, 315, 140])],
    "beyond the image": [plate([-20, -30, 500, 400])],
    "wholly outside": [plate([900, 900, 950, 950])],
    "small": [plate([60, 60, 61, 61])],
    "no text, no confidence": [{"bbox": [40, 90, 200, 140]}],
    "whole confidence": [plate([40, 90, 200, 140], confidence=1)],
    "other scripts": [plate([10, 90, 200, 140], text="京都 300 あ Ж7 ÄÖ j")],
    "one over another": [plate([40, 90, 200, 140]), plate([60, 100, 220, 150], text="7XYZ")],
    "more than four edges": [plate([40, 90, 200, 140, 7])],
}


@pytest.mark.skipif(not FONT.exists(), reason=f"{FONT} is not installed")
@pytest.mark.parametrize("case", CASES)
def test_like_pillow(scene: Path, case: str) -> None:
    ours = annotate(scene, CASES[case]).astype(int)
    assert np.abs(ours - drawn_by_pillow(scene, CASES[case])).max() <= 1


@pytest.mark.parametrize(
    ("record", "message"),
    [
        ({"ocr_text": "A"}, "'bbox'"),
        (plate([1, 2, 3]), "list index out of range"),
        (plate([9, 1, 5, 5]), "x1 must be greater than or equal to x0"),
        (plate([1, 9, 5, 5]), "y1 must be greater than or equal to y0"),
    ],
)
def test_records_that_cannot_be_drawn(scene: Path, record: Record, message: str) -> None:
    with pytest.raises(Refusal) as caught:
        annotate(scene, [record])
    assert str(caught.value) == message
