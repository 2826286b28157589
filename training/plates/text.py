"""From a design's pattern to rows of signs to draw, and the text that a reader should give."""

from dataclasses import dataclass
from random import Random

from ..alphabet import CN_PROVINCES, CN_SPECIAL, JP_KANA, JP_PLACES, KR_PLACES, KR_PRIVATE
from .design import Design

_OTHER = {" ": "gap", "-": "dash", ".": "dot", "*": "seal", "@": "logo", "|": "bar", "!": "bar"}
_ARABIC_DIGITS, _PERSIAN_DIGITS = "٠١٢٣٤٥٦٧٨٩", "۰۱۲۳۴۵۶۷۸۹"
_UNREAD = {
    "a": "أبجدرسصطعفقلمنهوىي", "t": "กขคงจฉชซฌญฎฐฒณดตถทธนบปผพภมยรลวศษสหฬอฮ", "e": _ARABIC_DIGITS
}  # drawn, but not of the text  # fmt: skip
OTHER_SCRIPTS = "".join(_UNREAD.values()) + _PERSIAN_DIGITS
_DOUBLED = 0.1  # share of letters and digits that repeat the one before, beside those by chance
_ALIKE = {"L": "OQDITBS", "D": "0186"}  # what gets mixed up
_HARD = 0.06  # share of letters and digits taken out of those


@dataclass(frozen=True)
class Sign:
    """`kind` is char, pile (of characters), gap, dash, dot, seal, logo or bar.

    `scale` is its height as a share of the row's.
    """

    kind: str
    char: str = ""
    scale: float = 1.0
    text: str = ""  # what a reader should give for it


def write(design: Design, rng: Random) -> tuple[list[list[Sign]], str]:
    """Return the rows of signs of a new plate, and its text."""
    pattern = rng.choice(design.patterns)
    rows = [_row(part, design, rng) for part in pattern.split("/")]
    return rows, "".join(sign.text for row in rows for sign in row)


def _row(pattern: str, design: Design, rng: Random) -> list[Sign]:
    signs: list[Sign] = []
    scale, literal = 1.0, False
    for mark in pattern:
        if mark == "\\" and not literal:
            literal = True
            continue
        if mark in _OTHER:
            signs.append(Sign(_OTHER[mark]))
            scale = 0.75 if mark == "|" else scale
        else:
            signs += _signs(mark, literal, scale, signs[-1].text if signs else "", design, rng)
        literal = False
    return signs


def _signs(mark: str, literal: bool, scale: float, last: str, design: Design, rng: Random):
    """Return the signs of one mark; `last` is the text of the sign before it."""
    if literal:
        return [Sign("char", mark, scale, mark)]
    if mark in _UNREAD:
        return [Sign("char", rng.choice(_UNREAD[mark]), scale)]
    if mark == "w":
        return [Sign("char", rng.choice(design.words), scale)]
    if mark in "dp":
        digit = rng.randrange(10)
        shown = (_ARABIC_DIGITS if mark == "d" else _PERSIAN_DIGITS)[digit]
        return [Sign("char", shown, scale, str(digit))]
    if mark == "V":
        place = rng.choice(KR_PLACES)
        return [Sign("pile", place, scale, place)]
    chars = _characters(mark, last, design, rng)
    return [Sign("char", c, scale * _own_scale(mark), c) for c in chars]


def _own_scale(mark: str) -> float:
    return {"K": 0.5, "U": 0.92}.get(mark, 1.0)


def _characters(mark: str, last: str, design: Design, rng: Random) -> str:
    """Return what a mark of the pattern stands for; `last` is the character before it."""
    if mark in "RJ":
        return rng.choice(KR_PLACES if mark == "R" else JP_PLACES)
    sets = {
        "L": design.letters, "D": "0123456789", "N": "123456789", "P": CN_PROVINCES,
        "S": CN_SPECIAL, "U": KR_PRIVATE, "K": JP_KANA, "X": design.letters + "0123456789",
    }  # fmt: skip
    possible = sets.get(mark, mark)
    if last and last in possible and rng.random() < _DOUBLED:
        return last
    if mark in _ALIKE and rng.random() < _HARD:
        possible = [c for c in _ALIKE[mark] if c in possible] or possible
    return rng.choice(possible)
