"""Run the small test programs of the image room, and read what they write."""

import os
import subprocess
from pathlib import Path

import numpy as np
import pytest

ROOT = Path(__file__).parents[3]


class Refusal(Exception):
    """The program ended with status 1 and this one line on standard error."""


def tool(name: str) -> Path:
    """The program in ZV_ANPR_TEST_TOOLS, beside ZV_ANPR_EXE, or in the release build."""
    folders = [ROOT / "build" / "release"]
    if executable := os.environ.get("ZV_ANPR_EXE"):
        folders.insert(0, Path(executable).parent)
    if chosen := os.environ.get("ZV_ANPR_TEST_TOOLS"):
        folders = [Path(chosen)]
    found = next((folder / name for folder in folders if (folder / name).exists()), None)
    if found is None:
        pytest.fail(f"{name} is not in {folders}: build the project, or set ZV_ANPR_TEST_TOOLS")
    return found


def run_tool(name: str, *arguments: object, text: str = "") -> tuple[bytes, str]:
    """Standard output and standard error; raises Refusal, and nothing but one line may be said."""
    command = [tool(name), *map(str, arguments)]
    done = subprocess.run(command, capture_output=True, input=text.encode(), check=False)
    errors = done.stderr.decode()
    if done.returncode == 1:
        assert errors.count("\n") == 1
        raise Refusal(errors.rstrip("\n"))
    assert done.returncode == 0, (done.returncode, errors)
    return done.stdout, errors


def pixels_of(dump: bytes) -> np.ndarray:
    """The (height, width, 3) array of a dump: "width height", a line break, the bytes."""
    head, _, data = dump.partition(b"\n")
    width, height = map(int, head.split())
    return np.frombuffer(data, np.uint8).reshape(height, width, 3)
