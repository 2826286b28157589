"""Runs the command as users do, and reads what it leaves."""

import io
import json
import os
import subprocess
import sys
from collections import Counter
from contextlib import redirect_stderr, redirect_stdout
from pathlib import Path
from typing import NamedTuple

import pyarrow.parquet as pq
from zelvoran_anpr.fleet.command import main

COMMAND = [sys.executable, "-m", "zelvoran_anpr.fleet"]
SMALL = ["--detector-model", "320p_fp32"]
LIMIT = 900  # seconds, far more than any of the tests takes on a quiet machine


class Done(NamedTuple):
    returncode: int
    stdout: str
    stderr: str


def read(*arguments: object) -> Done:
    """Run the command in this process, which spares its start."""
    with redirect_stdout(io.StringIO()) as out, redirect_stderr(io.StringIO()) as err:
        status = main(_words(arguments))
    return Done(status, out.getvalue(), err.getvalue())


def start(*arguments: object, **options) -> subprocess.Popen:
    """Start the command as users do."""
    pipes = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, "text": True}
    return subprocess.Popen([*COMMAND, *_words(arguments)], **pipes, **options)


def run(*arguments: object, **options) -> Done:
    """Run the command as users do."""
    process = start(*arguments, **options)
    try:
        out, err = process.communicate(timeout=LIMIT)
    finally:
        process.kill()
    return Done(process.returncode, out, err)


def _words(arguments: tuple[object, ...]) -> list[str]:
    return ["read", *map(str, arguments), *SMALL]


def refused(done: Done) -> str:
    """Return the one line of a run that could not go on."""
    assert done.returncode == 1, done
    errors = [line for line in done.stderr.splitlines() if line.startswith("Error: ")]
    assert len(errors) == 1 and "Traceback" not in done.stderr, done
    return errors[0]


def rows(target: Path) -> list[dict]:
    parts = sorted(target.glob("part-*.parquet"))
    return [row for part in parts for row in pq.read_table(part).to_pylist()]


def json_rows(target: Path) -> list[dict]:
    lines = [line for part in target.glob("part-*.jsonl") for line in part.read_text().splitlines()]
    return [json.loads(line) for line in lines]


def results_per_photo(rows: list[dict]) -> Counter:
    """Count how often a photo was read into the rows: the first row of each result counts."""
    return Counter(row["path"] for row in rows if row["plate"] == 0)


def plates(rows: list[dict]) -> list[tuple]:
    keys = ("path", "text", "confidence", "box", "box_confidence")
    return sorted(str([row[key] for key in keys]) for row in rows if row["text"] is not None)


def plates_of_one_machine(folder: Path, scratch: Path) -> list[tuple]:
    """Return what `zv-anpr FOLDER --json` finds, in the form of `plates`."""
    program = os.environ.get("ZV_ANPR_EXE") or Path(sys.executable).with_name("zv-anpr")
    json_file = scratch / "one-machine.json"
    command = [program, folder, "--json", json_file, *SMALL]
    environment = {**os.environ, "ZV_ANPR_PYTHON": sys.executable}
    subprocess.run(command, check=True, capture_output=True, timeout=LIMIT, env=environment)
    keys = ("filename", "ocr_text", "ocr_conf", "bbox", "bbox_conf")
    return sorted(str([row[key] for key in keys]) for row in json.loads(json_file.read_text()))
