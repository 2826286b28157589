"""Resumable download of one file of known size and digest into a `.part` file.

Whatever interrupts it, the bytes already on disk are kept and only the rest is asked for next time.
The model hub's client library begins anew after an interruption, so its download is not used.
"""

import shutil
import time
from pathlib import Path

from ..errors import MmcError
from .digest import sha256_of
from .http import TransientError, host_of
from .progress import progress
from .transfer import Remote, append

# Seconds to wait before each further attempt that brings no new byte.
RETRY_DELAYS = (0.5, 1.0, 2.0)


def fetch(remote: Remote, part: Path) -> None:
    """Complete and verify `part`; raises MmcError with the partial file kept for the next run."""
    part.parent.mkdir(parents=True, exist_ok=True)
    for last in (False, True):
        _complete(remote, part)
        if remote.sha256 is None or sha256_of(part) == remote.sha256:
            return
        part.unlink()
        if last:
            raise MmcError(
                f"{remote.name} arrived damaged twice from {host_of(remote.url)};"
                " try another mirror"
            )


def _complete(remote: Remote, part: Path) -> None:
    delays = list(RETRY_DELAYS)
    with progress(remote.name, _usable_size(part, remote.size), remote.size) as bar:
        while (have := _usable_size(part, remote.size)) < remote.size:
            _require_space(part.parent, remote.size - have, remote.name)
            try:
                append(remote, part, have, lambda done: bar.update(done - bar.n))
            except TransientError as error:
                if _usable_size(part, remote.size) > have:
                    delays = list(RETRY_DELAYS)
                if not delays:
                    raise MmcError(f"{error}; run it again to continue where it stopped") from None
                time.sleep(delays.pop(0))


def _usable_size(part: Path, size: int) -> int:
    try:
        have = part.stat().st_size
    except FileNotFoundError:
        return 0
    if have > size:
        part.unlink()
        return 0
    return have


def _require_space(folder: Path, need: int, name: str) -> None:
    free = shutil.disk_usage(folder).free
    if free < need:
        raise MmcError(
            f"not enough space in {folder}: {name} needs {need >> 20} MiB more,"
            f" {free >> 20} MiB are free"
        )
