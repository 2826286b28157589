"""What is done to every photo, and how that shows in the results."""

from dataclasses import asdict, dataclass

CONFIGURATION = (
    "zelvoran_anpr", "detector_model", "ocr_model", "region", "backend", "confidence",
)  # fmt: skip


@dataclass(frozen=True)
class Job:
    """Goes to the workers with every task.

    `zelvoran_anpr` is the package's version. `source` is the address through which photos of its
    storage are fetched: it may carry options and credentials, which no result shows.
    """

    zelvoran_anpr: str
    detector_model: str
    ocr_model: str
    region: str
    backend: str
    confidence: float
    source: str = ""

    def configuration(self) -> dict[str, str]:
        """Return what all results of a target have in common."""
        fields = asdict(self)
        return {key: str(fields[key]) for key in CONFIGURATION}
