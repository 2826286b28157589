"""Keeps the other writers of a shared file away for a moment, without a descriptor of its own."""

import contextlib
import sys
import time
from collections.abc import Iterator
from pathlib import Path

_PATIENCE_SECONDS = 0.5
_POLL_SECONDS = 0.005

if sys.platform == "win32":
    from filelock import FileLock, Timeout

    @contextlib.contextmanager
    def locked(descriptor: int, path: Path) -> Iterator[bool]:
        """Hold the lock of an open file; yields False when another one does not let go of it."""
        lock = FileLock(f"{path}.lock")
        try:
            lock.acquire(timeout=_PATIENCE_SECONDS)
        except (Timeout, OSError):
            yield False
            return
        try:
            yield True
        finally:
            lock.release()

else:
    import fcntl

    @contextlib.contextmanager
    def locked(descriptor: int, path: Path) -> Iterator[bool]:
        """Hold the lock of an open file; yields False when another one does not let go of it."""
        if not _taken(descriptor):
            yield False
            return
        try:
            yield True
        finally:
            fcntl.flock(descriptor, fcntl.LOCK_UN)

    def _taken(descriptor: int) -> bool:
        deadline = time.monotonic() + _PATIENCE_SECONDS
        while True:
            try:
                fcntl.flock(descriptor, fcntl.LOCK_EX | fcntl.LOCK_NB)
                return True
            except OSError:
                if time.monotonic() > deadline:
                    return False
                time.sleep(_POLL_SECONDS)
