"""Reads number plates on photos: image loading, plate detector, plate reader, pipeline.

The names resolve on first use, so that importing this package costs nothing.
"""

__all__ = [
    "PhotoTooLarge",
    "PlateBox",
    "PlateResult",
    "ReadError",
    "ReadResult",
    "load_image",
    "read_plates",
    "zelvoran_anpr_from_image_file",
    "zv_anpr_detector_v17",
    "zv_anpr_ocr_v17",
]


def __getattr__(name: str):
    if name in ("zelvoran_anpr_from_image_file", "zv_anpr_detector_v17", "zv_anpr_ocr_v17"):
        from . import v17 as source
    elif name == "read_plates":
        from . import pipeline as source
    elif name == "load_image":
        from . import image_loading as source
    elif name in ("PhotoTooLarge", "ReadError"):
        from . import errors as source
    elif name in ("PlateResult", "ReadResult"):
        from . import plate_result as source
    elif name == "PlateBox":
        from . import plate_box as source
    else:
        raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
    return getattr(source, name)
