"""The processes that the local backend starts, as seen from outside, and pictures for it."""

import os
from pathlib import Path

import numpy as np


def photo(color, height=40, width=60) -> np.ndarray:
    return np.full((height, width, 3), color, dtype=np.uint8)


def processes(marker: str) -> list[int]:
    """Pids whose command line holds `marker`."""
    found = []
    for entry in Path("/proc").glob("[0-9]*/cmdline"):
        try:
            if marker.encode() in entry.read_bytes():
                found.append(int(entry.parent.name))
        except OSError:
            continue
    return [pid for pid in found if pid != os.getpid()]


def server_pid(config) -> int:
    """The double itself, not the tether that holds it."""
    both = processes(config["local"]["server_bin"])
    return next(p for p in both if b"tether.py" not in Path(f"/proc/{p}/cmdline").read_bytes())
