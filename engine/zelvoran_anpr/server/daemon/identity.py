"""Tells one process from a later one that was given the same process id."""

import os
import sys
from pathlib import Path

_DEAD_STATES = ("Z", "X", "x")


def process_mark(pid: int) -> str | None:
    """Return a text that no other process of this machine shares, or None when none runs.

    A process that has ended but was not collected by its parent counts as not running.
    """
    return _linux_mark(pid) if sys.platform == "linux" else _psutil_mark(pid)


def machine_mark() -> str:
    """Return a text that tells this run of this machine, or container, from others.

    Records in a home directory that several machines share carry it: a process id means nothing
    elsewhere.
    """
    if sys.platform != "linux":
        import platform

        return platform.node()
    boot = Path("/proc/sys/kernel/random/boot_id").read_text().strip()
    return f"{boot}/{os.readlink('/proc/self/ns/pid')}"


def _linux_mark(pid: int) -> str | None:
    # The start in clock ticks since boot: unlike a time of day it does not move with the clock.
    try:
        stat = Path(f"/proc/{pid}/stat").read_bytes()
    except OSError:
        return None
    fields = stat[stat.rindex(b")") + 2 :].decode().split()
    return None if fields[0] in _DEAD_STATES else fields[19]


def _psutil_mark(pid: int) -> str | None:
    import psutil

    try:
        process = psutil.Process(pid)
        ended = process.status() == psutil.STATUS_ZOMBIE
        return None if ended else f"{process.create_time():.3f}"
    except psutil.Error:
        return None
