"""From the network's cells to text, and from several looks to one text."""

from collections import defaultdict
from math import prod

import numpy as np

from .plate_text import PlateText

SHORTEST = 3  # characters from which a look shows a plate
_GAP = 0
_NOTHING = 0.2  # weight of a look that sees no plate
_MOST_NOTHING = 0.5  # weight of all of them: what one look reads is not undone by four empty ones


def text_of(cells: np.ndarray, characters: str) -> PlateText:
    """Return the text of cells x classes probabilities; the first half of them is the upper row.

    Neighbouring cells of one class are one character, as sure as the surest of them.
    """
    best = cells.argmax(axis=1)
    starts = np.flatnonzero(np.diff(best, prepend=-1))
    runs = zip(starts, [*starts[1:], len(best)], strict=True)
    kept = [(start, end) for start, end in runs if best[start] != _GAP]
    text = "".join(characters[best[start] - 1] for start, _ in kept)
    sure = tuple(float(cells[start:end, best[start]].max()) for start, end in kept)
    rows = tuple(int(2 * start >= len(best)) for start, _ in kept)
    return PlateText(text, sure, rows=rows)


def elected(readings: list[PlateText]) -> PlateText:
    """Return the reading with most weight, less sure by the root of the share that agrees."""
    votes: dict[str, list[PlateText]] = defaultdict(list)
    for reading in readings:
        votes[reading.text].append(reading)
    weights = {text: _weight(text, same) for text, same in votes.items()}
    ranked = sorted(votes, key=lambda text: -weights[text])
    agreeing = votes[ranked[0]]
    share = (len(agreeing) / len(readings)) ** 0.5
    sure = np.mean([reading.confidences for reading in agreeing], axis=0) * share
    total = sum(weights.values()) or 1.0
    candidates = tuple((text, weights[text] / total) for text in ranked)
    sure = tuple(map(float, sure)) if ranked[0] else ()
    return PlateText(ranked[0], sure, candidates, rows=agreeing[0].rows)


def _weight(text: str, same: list[PlateText]) -> float:
    if not text:
        return min(_MOST_NOTHING, _NOTHING * len(same))
    return sum(prod(reading.confidences) for reading in same)
