"""Zelvoran ANPR: reads number plates on photos, offline.

Importing the package loads nothing heavy: every public name resolves on first use, and NumPy,
Pillow and ONNX Runtime load only when a detector or reader object is constructed.
"""

__all__ = [
    "__version__",
    "zelvoran_anpr_expect_image_files",
    "zelvoran_anpr_from_image_file",
    "zv_anpr_detector_v17",
    "zv_anpr_ocr_v17",
]


def zelvoran_anpr_expect_image_files(detector, ocr, paths) -> None:
    """Begin with photos that `zelvoran_anpr_from_image_file` will be called for, in this order.

    A few photos ahead of the calls, in threads. Answers and errors stay those of the calls.
    """
    from .reading.v17 import expect_image_files

    expect_image_files(detector, ocr, paths)


def __getattr__(name: str):
    if name == "__version__":
        from ._version import __version__ as value
    elif name in __all__:
        from .reading import v17

        value = getattr(v17, name)
    else:
        raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
    globals()[name] = value
    return value


def __dir__() -> list[str]:
    return sorted({*globals(), *__all__})
