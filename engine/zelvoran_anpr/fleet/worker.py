"""What runs at a worker: fetches photos, reads them with one warm engine, makes their rows."""

import hashlib
import os
import threading
import time
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from functools import lru_cache
from typing import Any

from .. import reading
from .._version import __version__
from ..reading.kept_memory import keep_freed_memory
from . import addresses, fetching
from .errors import FleetError, one_line
from .job import Job
from .notes import notes

Row = dict[str, Any]
_COLUMNS = (
    "path", "plate", "size", "digest", "text", "confidence", "box", "box_confidence", "width",
    "height", "seconds", "error", "versions",
)  # fmt: skip
_BUILDING = threading.Lock()


def read_chunk(job: Job, photos: list[str]) -> list[Row]:
    """Return the rows of some photos; what is wrong with a photo is in its row."""
    if job.zelvoran_anpr != __version__:
        raise FleetError(wrong_version("a worker", __version__, job.zelvoran_anpr))
    try:
        read = photo_reader(job)
    except OSError as error:
        raise FleetError(f"A worker cannot load the engine: {one_line(error)}") from None
    return [row for photo, data in fetching.ahead(photos, job.source) for row in read(photo, data)]


def row_of_error(job: Job, photo: str, error: str) -> Row:
    """Return the row of a photo that no worker came back from."""
    return _row(photo, {**job.configuration(), "onnxruntime": None}, error)


def wrong_version(worker: str, its: str | None, ours: str) -> str:
    has = f"has zelvoran-anpr {its}" if its else "has no zelvoran-anpr"
    return f"{worker} {has} and this is {ours}: install the same version on all machines"


@lru_cache(maxsize=1)
def _engine(detector_model: str, ocr_model: str, region: str, backend: str) -> tuple:
    keep_freed_memory()
    with _one_core():
        detector = reading.zv_anpr_detector_v17(detector_model, backend=backend)
        return detector, reading.zv_anpr_ocr_v17(ocr_model, region, backend=backend)


@contextmanager
def _one_core() -> Iterator[None]:
    """Let sessions made meanwhile compute on their caller's thread alone.

    A session gets as many threads as its maker may use cores, and here every core has a worker
    thread of its own already.
    """
    if not hasattr(os, "sched_setaffinity"):
        yield
        return
    cores = os.sched_getaffinity(0)
    os.sched_setaffinity(0, {min(cores)})
    try:
        yield
    finally:
        os.sched_setaffinity(0, cores)


def photo_reader(job: Job) -> Callable[[str, bytes | Exception], list[Row]]:
    """Return what makes the rows of one photo; the engine lasts as long as the process."""
    with _BUILDING:  # or every thread would load an engine of its own
        engine = _engine(job.detector_model, job.ocr_model, job.region, job.backend)
    from ..reading.quiet_runtime import onnxruntime

    versions = {**job.configuration(), "onnxruntime": onnxruntime.__version__}

    def read(photo: str, data: bytes | Exception) -> list[Row]:
        if isinstance(data, Exception):
            return [_row(photo, versions, one_line(data))]
        row = _row(photo, versions)
        row |= {"size": len(data), "digest": hashlib.sha256(data).hexdigest()}
        begun = time.perf_counter()
        try:
            with notes() as words:
                height, width, plates = _plates(engine, data)
        except Exception as error:  # noqa: BLE001  no photo ends the run
            return [{**row, "error": _about_photo(one_line(error))}]
        row |= {"height": height, "width": width, "seconds": time.perf_counter() - begun}
        row["error"] = "; ".join(map(_about_photo, words)) or None
        kept = [plate for plate in plates if plate["ocr_conf"] >= job.confidence]
        return [{**row, **_of_plate(n, p)} for n, p in enumerate(kept)] or [row]

    return read


def _row(photo: str, versions: dict, error: str | None = None) -> Row:
    known = {"path": addresses.shown(photo), "plate": 0, "error": error, "versions": versions}
    return {**dict.fromkeys(_COLUMNS), **known}


def _about_photo(text: str) -> str:
    return text.removesuffix(": the photo")  # which the row names


def _plates(engine: tuple, data: bytes) -> tuple[int, int, list[dict]]:
    image = reading.load_image(data)
    return *image.shape[:2], reading.read_plates(*engine, image)["results"]


def _of_plate(number: int, plate: dict) -> Row:
    return {
        "plate": number,
        "text": plate["ocr"],
        "confidence": plate["ocr_conf"],
        "box": plate["ltrb"],
        "box_confidence": plate["ltrb_conf"],
    }
