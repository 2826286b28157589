"""From a design's pattern to rows of signs to draw, and the text that a reader should give."""

from dataclasses import dataclass
from random import Random

from ..alphabet import CN_PROVINCES, CN_SPECIAL, JP_KANA, JP_PLACES, KR_PLACES, KR_PRIVATE
from .design import Design

_OTHER = {" ": "gap", "-": "dash", ".": "dot", "*": "seal", "|": "bar"}


@dataclass(frozen=True)
class Sign:
    """`kind` is char, gap, dash, dot, seal or bar; `scale` its height as a share of the row's."""

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
            chars = mark if literal else _characters(mark, design, rng)
            signs += [Sign("char", c, scale * _own_scale(mark), c) for c in chars]
        literal = False
    return signs


def _own_scale(mark: str) -> float:
    return {"K": 0.5, "U": 0.92}.get(mark, 1.0)


def _characters(mark: str, design: Design, rng: Random) -> str:
    if mark in "RJ":
        return rng.choice(KR_PLACES if mark == "R" else JP_PLACES)
    sets = {
        "L": design.letters, "D": "0123456789", "P": CN_PROVINCES, "S": CN_SPECIAL,
        "U": KR_PRIVATE, "K": JP_KANA, "X": design.letters + "0123456789",
    }  # fmt: skip
    return rng.choice(sets.get(mark, mark))
