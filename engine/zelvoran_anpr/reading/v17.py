"""The public classes of model family v17; NumPy and ONNX Runtime load in their constructors."""

TYPE_CHECKING = False  # type checkers take it as true; typing itself is too heavy here
if TYPE_CHECKING:
    import os
    from collections.abc import Callable

    import numpy as np

    from .plate_box import PlateBox
    from .plate_result import ReadResult
    from .plate_text import PlateText

# The public names are fixed by the interface that front ends load.
# ruff: noqa: N801


class zv_anpr_detector_v17:
    """Finds plates: model "320p_fp32" or "640p_fp32"; backend "cpu", "cuda" or "directml".

    Raises ValueError with one clear line for an unknown or missing model or backend.
    """

    def __init__(self, model: str, backend: str = "cpu"):
        from .plate_detector import PlateDetector

        self._backend = backend
        self._ahead = None  # the photos that will be asked for
        self._detector = PlateDetector.named(model, backend)

    def detect(self, image_rgb: "np.ndarray") -> "list[PlateBox]":
        """Return the PlateBox candidates on an H x W x 3 uint8 RGB array; thread-safe."""
        return self._detector.detect(image_rgb)


class zv_anpr_ocr_v17:
    """Reads plates: model "fp32" or "int8"; region as users type it; backend as the detector's.

    Raises ValueError with one clear line for an unknown or missing model, region or backend.
    """

    def __init__(self, model: str, region: str = "univ", backend: str = "cpu"):
        from ..region_aliases import to_internal_region
        from .plate_reader import PlateReader

        self.region = to_internal_region(region)
        self._reader = PlateReader.named(model, backend)

    def read(
        self, image_rgb: "np.ndarray", box: "PlateBox", region: str | None = None
    ) -> "PlateText":
        """Return the PlateText in a PlateBox of an RGB array; thread-safe.

        `region` is an internal region that replaces the object's own for this call.
        """
        return self._reader.read(image_rgb, box, region or self.region)


def zelvoran_anpr_from_image_file(
    detector: zv_anpr_detector_v17, ocr: zv_anpr_ocr_v17, path: "str | os.PathLike[str]"
) -> "ReadResult":
    """Read the plates on an image file; returns the mapping of `read_plates`.

    Raises ReadError (a ValueError) with one clear line when the file is not a readable photo.
    """
    ahead = getattr(detector, "_ahead", None)
    known = ahead[1].result(path) if ahead and ahead[0] is ocr else None
    return known or _read(detector, ocr, path)


def _read(detector, ocr, path, admit: "Callable[[int], None] | None" = None) -> "ReadResult":
    from .image_loading import open_photo
    from .pipeline import COARSE, read_plates

    return read_plates(detector, ocr, open_photo(path, COARSE, admit))


def expect_image_files(
    detector: zv_anpr_detector_v17, ocr: zv_anpr_ocr_v17, paths: "list[str]"
) -> None:
    """Begin with photos that `zelvoran_anpr_from_image_file` will be called for, in this order."""
    from .cpu_cores import physical_cores
    from .kept_memory import keep_freed_memory
    from .photos_ahead import PhotosAhead, threads_for

    if detector._ahead:
        detector._ahead[1].stop()
    keep_freed_memory()
    threads = threads_for(detector._backend, physical_cores())
    ahead = PhotosAhead(lambda path, admit: _read(detector, ocr, path, admit), paths, threads)
    detector._ahead = ocr, ahead
