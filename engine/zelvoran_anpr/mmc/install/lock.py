"""A lock file that one process holds; the system lets go of it when that process dies."""

import os
import time
from pathlib import Path
from types import TracebackType

from ..errors import MmcError
from ..fetch.progress import hint

if os.name == "nt":
    import msvcrt

    def _try_lock(fd: int) -> bool:
        try:
            msvcrt.locking(fd, msvcrt.LK_NBLCK, 1)
        except OSError:
            return False
        return True
else:
    import fcntl

    def _try_lock(fd: int) -> bool:
        try:
            fcntl.flock(fd, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            return False
        except OSError:
            # The file system has no locks: work on alone rather than not at all.
            return True
        return True


_POLL_SECONDS = 0.2


class FileLock:
    """`with FileLock(path, busy=text):` waits for the holder, or raises `busy` with wait=False."""

    def __init__(self, path: Path, busy: str, wait: bool = True, quiet: bool = False) -> None:
        self._path, self._busy, self._wait, self._quiet = path, busy, wait, quiet
        self._fd = -1

    def __enter__(self) -> "FileLock":
        self._path.parent.mkdir(parents=True, exist_ok=True)
        told = self._quiet
        while not self._acquire():
            if not self._wait:
                raise MmcError(self._busy)
            if not told:
                hint(f"{self._busy}; waiting for it")
                told = True
            time.sleep(_POLL_SECONDS if not self._quiet else 0.005)
        return self

    def _acquire(self) -> bool:
        fd = os.open(self._path, os.O_RDWR | os.O_CREAT, 0o600)
        if _try_lock(fd) and self._still_named(fd):
            self._fd = fd
            return True
        os.close(fd)
        return False

    def _still_named(self, fd: int) -> bool:
        # The former holder removes the file: a lock on the removed one guards nothing.
        try:
            return os.path.samestat(os.fstat(fd), os.stat(self._path))
        except FileNotFoundError:
            return False

    def __exit__(
        self,
        kind: type[BaseException] | None,
        error: BaseException | None,
        tb: TracebackType | None,
    ) -> None:
        try:
            if os.name != "nt":
                self._path.unlink(missing_ok=True)
        except OSError:
            pass
        os.close(self._fd)
