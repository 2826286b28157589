"""Characters out of pictures: a folder of official drawings stands where a font stands.

FOLDER/TYPE/NAME.png, one character each, dark or transparent around it; Hangul has the two-letter
codes below, a place's two syllables are one picture.
"""

from functools import lru_cache
from pathlib import Path

import numpy as np
from PIL import Image

_PREFIX = "drawings "
_CODES = {
    "A": "가나다라마거너더러머버서어저", "B": "고노도로모보소오조구두무수누루부우주", "H": "하허호",
    "M": "육해공국합", "T": "바사아자",
}  # fmt: skip
_PLACES = {
    "서울": "ALDF", "부산": "BPDN", "강원": "DADK", "경기": "DBCF", "경남": "DBDL", "경북": "DBDM",
    "광주": "DCBR", "대구": "DDBJ", "대전": "DDDH", "울산": "DFDN", "인천": "DGDP", "전남": "DHDL",
    "전북": "DHDM", "제주": "DIBR", "충남": "DJDL", "충북": "DJDM",
}  # fmt: skip
_NAMES = {
    character: first + chr(ord("A") + i)
    for first, characters in _CODES.items()
    for i, character in enumerate(characters)
}


def drawing(folder: str, kind: str) -> str:
    """Return the name of the drawings of one type of plate."""
    return f"{_PREFIX}{folder}/{kind}"


def is_drawing(name: str) -> bool:
    """Tell whether a font's name is that of drawings."""
    return name.startswith(_PREFIX)


def shows(name: str, text: str) -> bool:
    """Tell whether there is a drawing of the character or place."""
    return _file(name, text) is not None


@lru_cache(maxsize=4096)
def draw(name: str, text: str, height: int) -> Image.Image:
    """Return an 8-bit mask of a character or place, cut to its ink, `height` pixels high."""
    file = _file(name, text)
    if file is None:
        raise ValueError(f"{name} has no drawing of {text!r}")
    picture = Image.open(file).convert("RGBA")
    alpha = picture.getchannel("A")
    ink = alpha if alpha.getextrema()[0] < 128 else _dark(picture)
    ink = ink.crop(ink.point(lambda value: 255 * (value > 128)).getbbox())
    width = max(1, round(ink.width * height / ink.height))
    return ink.resize((width, height), Image.Resampling.BOX)


def _dark(picture: Image.Image) -> Image.Image:
    return Image.fromarray(255 - np.asarray(picture.convert("L")))


@lru_cache(maxsize=4096)
def _file(name: str, text: str) -> Path | None:
    folder = Path(name.removeprefix(_PREFIX))
    stem = _PLACES.get(text) or _NAMES.get(text) or text
    files = (folder / f"{s}.png" for s in (stem, f"{stem}-1") if s.isascii())
    return next((file for file in files if file.is_file()), None)
