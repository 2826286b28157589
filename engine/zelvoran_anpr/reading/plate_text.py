"""The text of a plate with its confidences."""

from dataclasses import dataclass


@dataclass(frozen=True)
class PlateText:
    """Plate text without separators, one confidence (0..1) per character, and what was read.

    `rows` holds the raw text of every row, separators included.
    """

    text: str
    confidences: tuple[float, ...]
    rows: tuple[str, ...] = ()

    @property
    def confidence(self) -> float:
        """A plate is read as surely as its least certain character."""
        return min(self.confidences, default=0.0)
