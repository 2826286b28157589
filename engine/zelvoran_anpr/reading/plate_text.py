"""The text of a plate with its confidences, and what else the reader saw."""

from dataclasses import dataclass, field, replace


@dataclass(frozen=True)
class PlateText:
    """Plate text without separators, and one confidence (0..1) per character.

    `candidates` are the texts that the looks voted for with the share of the votes (0..1), the
    chosen one first. `groups` tells how much (0..1) it looks like plates of each region group,
    `rows` for each character whether it stands in the upper (0) or the lower (1) half.
    """

    text: str
    confidences: tuple[float, ...]
    candidates: tuple[tuple[str, float], ...] = field(default=(), compare=False)
    groups: dict[str, float] = field(default_factory=dict, compare=False)
    rows: tuple[int, ...] = field(default=(), compare=False)

    @property
    def confidence(self) -> float:
        """A plate is read as surely as its least certain character."""
        return min(self.confidences, default=0.0)

    @property
    def legibility(self) -> float:
        """How well the characters but the weakest can be read: whether there is a plate at all."""
        rest = sorted(self.confidences)[1:]
        return min(rest, default=0.0)

    def at_most(self, limit: float) -> "PlateText":
        """Return the same text, no character surer than `limit`."""
        return replace(self, confidences=tuple(min(sure, limit) for sure in self.confidences))
