"""The engine as a class for Ray Data, for those who run Ray already.

    photos = ray.data.read_binary_files("s3://bucket/photos", include_paths=True)
    rows = photos.map_batches(PlateReader, **map_arguments(actors=8))
    rows.write_parquet("s3://bucket/plates")

Rows are those of `python -m zelvoran_anpr.fleet read`. Ray keeps no state of a run: one that was
stopped begins anew.
"""

import logging
from typing import Any

import pyarrow as pa
import ray
from ray.data import ActorPoolStrategy

from .._version import __version__
from ..region_aliases import to_internal_region
from .job import Job
from .rows import SCHEMA
from .worker import photo_reader

_log = logging.getLogger(__name__)
_BATCH = 16  # photos


def map_arguments(actors: int) -> dict[str, Any]:
    """Return what `map_batches` needs beside the class to read with so many cores.

    Actors count half: Ray stalls without a word where they leave less than one core to the tasks
    that fetch photos.
    """
    return {
        "batch_size": _BATCH,
        "compute": ActorPoolStrategy(size=actors),
        "num_cpus": 0.5,
    }


class PlateReader:
    """Takes batches with the columns "path" and "bytes", and returns the rows of their plates."""

    def __init__(
        self,
        detector_model: str = "640p_fp32",
        ocr_model: str = "fp32",
        region: str = "univ",
        backend: str = "cpu",
        confidence: float = 0.5,
    ) -> None:
        internal = to_internal_region(region)
        job = Job(__version__, detector_model, ocr_model, internal, backend, confidence)
        self._read = photo_reader(job)
        _warn_of_stall()

    def __call__(self, batch: dict[str, Any]) -> pa.Table:
        photos = zip(batch["path"], batch["bytes"], strict=True)
        rows = [row for path, data in photos for row in self._read(str(path), bytes(data))]
        return pa.Table.from_pylist(rows, SCHEMA)


def _warn_of_stall() -> None:
    own = ray.get_runtime_context().get_assigned_resources().get("CPU", 0)
    if own >= 1 and ray.available_resources().get("CPU", 0) < 1:
        _log.warning(
            "Less than one core is left for fetching photos, so Ray may stall: "
            "use map_batches(PlateReader, **map_arguments(actors))"
        )
