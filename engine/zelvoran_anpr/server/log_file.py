"""The log that all servers of a user share, rotated so that followers and writers keep it.

Rotation copies the log away and empties it in place: a `tail -f`, a second server and the
descriptors that native libraries print to all go on with the same file. What is emptied before a
`tail -f` has looked, it never shows: rotation comes before a line is written, never right after
one, and leaves it a moment to look before and after.
"""

import contextlib
import logging
import os
import shutil
import sys
import time
from collections.abc import Iterator
from pathlib import Path

from filelock import FileLock, Timeout

_PATIENCE_SECONDS = 0.5
_FOLLOWERS_SECONDS = 0.1


class SharedLogHandler(logging.Handler):
    """Appends whole lines; at `max_bytes` moves the content to `.1`, keeping `kept` old logs."""

    def __init__(self, path: Path, max_bytes: int, kept: int) -> None:
        super().__init__()
        self._path = path
        self._max_bytes = max_bytes
        self._kept = kept
        # Several servers write the same file: nobody may write between the copy and the emptying.
        self._lock_file = FileLock(f"{path}.lock", mode=0o600)
        self._file = open(path, "ab", buffering=0)  # noqa: SIM115 (closed in close)

    def emit(self, record: logging.LogRecord) -> None:
        try:
            line = self.format(record).encode("utf-8", "backslashreplace") + b"\n"
            with self._alone() as alone:
                if self._was_moved():
                    self._reopen()
                if alone and self._is_full(len(line)):
                    self._rotate()
                self._file.write(line)
        except OSError:
            self.handleError(record)

    def close(self) -> None:
        self._file.close()
        super().close()

    @contextlib.contextmanager
    def _alone(self) -> Iterator[bool]:
        """Keep other writers away; yields False when one does not go on, to lose no line."""
        try:
            self._lock_file.acquire(timeout=_PATIENCE_SECONDS)
        except Timeout:
            yield False
            return
        try:
            yield True
        finally:
            self._lock_file.release()

    def _was_moved(self) -> bool:
        try:
            return not os.path.samestat(os.stat(self._path), os.fstat(self._file.fileno()))
        except FileNotFoundError:
            return True

    def _is_full(self, more: int) -> bool:
        size = os.fstat(self._file.fileno()).st_size
        return size > 0 and size + more > self._max_bytes

    def _rotate(self) -> None:
        time.sleep(_FOLLOWERS_SECONDS)
        for number in range(self._kept - 1, 0, -1):
            older = Path(f"{self._path}.{number}")
            if older.exists():
                os.replace(older, f"{self._path}.{number + 1}")
        shutil.copyfile(self._path, f"{self._path}.1")
        os.truncate(self._path, 0)
        time.sleep(_FOLLOWERS_SECONDS)

    def _reopen(self) -> None:
        self._file.close()
        self._file = open(self._path, "ab", buffering=0)  # noqa: SIM115


class _Format(logging.Formatter):
    converter = time.gmtime
    default_time_format = "%Y-%m-%dT%H:%M:%S"
    default_msec_format = "%s.%03dZ"


def set_up_logging(path: Path, max_bytes: int, kept: int, console: bool) -> None:
    """Send everything that is logged in this process to the log, and to stderr if wanted."""
    path.parent.mkdir(mode=0o700, parents=True, exist_ok=True)
    handlers: list[logging.Handler] = [SharedLogHandler(path, max_bytes, kept)]
    if console:
        handlers.append(logging.StreamHandler(sys.stderr))
    for handler in handlers:
        handler.setFormatter(_Format("%(asctime)s %(process)d %(levelname)s %(name)s %(message)s"))
    logging.basicConfig(handlers=handlers, level=logging.INFO, force=True)
