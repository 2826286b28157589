"""Which models there are: the names users give, and the file behind each."""

from dataclasses import dataclass
from pathlib import Path

from .errors import ModelError

_FOLDER = Path(__file__).parent / "models"


@dataclass(frozen=True)
class DetectorModel:
    """A plate detector's file, and the longer side in pixels that photos are scaled to."""

    file: str
    longest: int


# One network serves both sizes: training shows it plates of every scale.
_DETECTOR_FILE = "detector_fp32.onnx"
DETECTORS = {
    "320p_fp32": DetectorModel(_DETECTOR_FILE, 320),
    "640p_fp32": DetectorModel(_DETECTOR_FILE, 640),
}
READERS = {"fp32": "reader_fp32.onnx", "int8": "reader_int8.onnx"}


def find_detector(name: str) -> DetectorModel:
    """Return the detector of a name; raises ModelError with the names there are."""
    if name not in DETECTORS:
        raise ModelError(f'Unknown detector model "{name}": use {" or ".join(DETECTORS)}')
    return DETECTORS[name]


def find_reader(name: str) -> str:
    """Return the file of a reader; raises ModelError with the names there are."""
    if name not in READERS:
        raise ModelError(f'Unknown OCR model "{name}": use {" or ".join(READERS)}')
    return READERS[name]


def model_path(file: str) -> str:
    """Return where a model file lies; raises ModelError when the installation lost it."""
    path = _FOLDER / file
    if not path.is_file():
        raise ModelError(
            f"The model file {file} is missing: reinstall it with "
            f'"pip install --force-reinstall zelvoran-anpr"'
        )
    return str(path)
