"""The text of a plate with its confidences."""

from dataclasses import dataclass


@dataclass(frozen=True)
class PlateText:
    """Plate text without separators, and one confidence (0..1) per character."""

    text: str
    confidences: tuple[float, ...]

    @property
    def confidence(self) -> float:
        """A plate is read as surely as its least certain character."""
        return min(self.confidences, default=0.0)
