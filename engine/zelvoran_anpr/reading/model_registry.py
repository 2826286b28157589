"""Which models there are: the names users give, what runs behind each, and where its file lies."""

from dataclasses import dataclass
from importlib.util import find_spec
from pathlib import Path

from .errors import ModelError

# The general text models ship inside this package of the registry; only its files are used.
_MODEL_PACKAGE = "rapidocr"


@dataclass(frozen=True)
class DetectorModel:
    """A text detector: its file in the model package, and how large it sees a photo.

    `scales` are long sides in pixels; the photo is searched once at each.
    """

    file: str
    scales: tuple[int, ...]


@dataclass(frozen=True)
class ReaderModel:
    """A text reader: its file in the model package."""

    file: str


_DETECTION_FILE = "models/PP-OCRv6_det_small.onnx"

# None: a name of this version whose model is not part of it yet.
DETECTORS: dict[str, DetectorModel | None] = {
    "320p_fp32": DetectorModel(_DETECTION_FILE, (640,)),
    "640p_fp32": DetectorModel(_DETECTION_FILE, (1280,)),
}
READERS: dict[str, ReaderModel | None] = {
    "fp32": ReaderModel("models/PP-OCRv6_rec_small.onnx"),
    "int8": None,
}


def find_detector(name: str) -> DetectorModel:
    return _find(DETECTORS, name, "detector")


def find_reader(name: str) -> ReaderModel:
    return _find(READERS, name, "OCR")


def _find(models: dict, name: str, kind: str):
    usable = ", ".join(known for known, model in models.items() if model)
    if name not in models:
        raise ModelError(f'Unknown {kind} model "{name}": use {" or ".join(models)}')
    if models[name] is None:
        raise ModelError(f'The {kind} model "{name}" is not part of this version yet: use {usable}')
    return models[name]


def model_path(file: str) -> str:
    """Return where a model file lies; raises ModelError when its package is not installed."""
    spec = find_spec(_MODEL_PACKAGE)
    for folder in (spec.submodule_search_locations or []) if spec else []:
        path = Path(folder, file)
        if path.is_file():
            return str(path)
    raise ModelError(
        f"The model file {file} is missing: reinstall it with "
        f'"pip install --force-reinstall {_MODEL_PACKAGE}=={_MODEL_PACKAGE_VERSION}"'
    )


_MODEL_PACKAGE_VERSION = "3.10.0"
