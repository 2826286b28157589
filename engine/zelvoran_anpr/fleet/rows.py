"""The rows of results, as Parquet and as JSON lines.

A photo has one row per plate, or a single row without text: with its error, or because it shows
no plate. `plate` counts a photo's rows from 0, so path and plate together name a row.
"""

import json
from typing import Any, BinaryIO

import pyarrow as pa
import pyarrow.parquet as pq

from .job import CONFIGURATION

Row = dict[str, Any]
VERSIONS = (*CONFIGURATION, "onnxruntime")
SCHEMA = pa.schema(
    {
        "path": pa.string(),
        "plate": pa.int32(),
        "size": pa.int64(),
        "digest": pa.string(),
        "text": pa.string(),
        "confidence": pa.float64(),
        "box": pa.list_(pa.int32()),
        "box_confidence": pa.float64(),
        "width": pa.int32(),
        "height": pa.int32(),
        "seconds": pa.float64(),
        "error": pa.string(),
        "versions": pa.struct([(key, pa.string()) for key in VERSIONS]),
    }
)


def encode(rows: list[Row], ending: str) -> bytes:
    if ending == "jsonl":
        return "".join(json.dumps(row, ensure_ascii=False) + "\n" for row in rows).encode()
    sink = pa.BufferOutputStream()
    pq.write_table(pa.Table.from_pylist(rows, SCHEMA), sink)
    return sink.getvalue().to_pybytes()


def decode(file: BinaryIO, ending: str, columns: list[str] | None = None) -> list[Row]:
    """Return the rows of a part; raises ValueError or OSError when it is none of ours."""
    if ending == "jsonl":
        rows = [json.loads(line) for line in file.read().decode().splitlines()]
        return [{key: row[key] for key in columns or row} for row in rows]
    return pq.read_table(file, columns=columns).to_pylist()
