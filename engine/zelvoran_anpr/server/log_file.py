"""The log that all servers of a user share: bounded, rotated in place, written by a thread.

Rotation moves the content to `.1` and empties the log itself, so that a `tail -f`, a second server
and the descriptors that native libraries print to all go on with the same file. What is emptied
before a `tail -f` has looked, it never shows: it is given a moment for that.
"""

import contextlib
import logging
import os
import sys
import threading
from collections.abc import Iterator
from pathlib import Path
from queue import SimpleQueue

from .log_lock import locked
from .log_rotation import FULL, drop_oldest, rotate

_LEEWAY = 2  # the log may grow to so many times its size while it cannot be rotated
_MOST_WAITING = 20_000
_CLOSE_SECONDS = 5


class LogFile:
    """Appends whole lines; at `max_bytes` moves the content to `.1`, keeping `kept` old logs."""

    def __init__(self, path: Path, max_bytes: int, kept: int) -> None:
        self._path = path
        self._max_bytes = max_bytes
        self._kept = kept
        self._lost = 0
        self._descriptor = _opened(path)
        self._spare: int | None = None
        self._keep_spare()

    def write(self, line: bytes) -> None:
        """Append a line, or count it as lost when there is no room for it. Never raises."""
        # Several servers write the same file: nobody may write between moving and emptying.
        with locked(self._descriptor, self._path) as alone:
            moved, full = self._was_moved(), self._is_full(len(line))
            if moved or (full and alone):
                with contextlib.suppress(OSError), self._one_free_descriptor():
                    self._reopen() if moved else rotate(self._descriptor, self._path, self._kept)
            try:
                self._append(line)
            except OSError:
                self._lost += 1

    def close(self) -> None:
        os.close(self._descriptor)
        if self._spare is not None:
            os.close(self._spare)

    def _append(self, line: bytes) -> None:
        size = os.fstat(self._descriptor).st_size
        if size + len(line) > _LEEWAY * self._max_bytes and size > 0:
            self._lost += 1
            return
        if self._lost:
            line = f"({self._lost} lines before this one are lost)\n".encode() + line
        while not self._is_whole(line, size):
            if not drop_oldest(self._path, self._kept):  # the disk is full
                self._lost += 1
                return
        self._lost = 0

    def _is_whole(self, line: bytes, size: int) -> bool:
        try:
            if os.write(self._descriptor, line) == len(line):
                return True
        except OSError as error:
            if error.errno not in FULL:
                raise
        os.ftruncate(self._descriptor, size)  # no halves
        return False

    def _was_moved(self) -> bool:
        try:
            return not os.path.samestat(os.stat(self._path), os.fstat(self._descriptor))
        except FileNotFoundError:
            return True

    def _is_full(self, more: int) -> bool:
        size = os.fstat(self._descriptor).st_size
        return size > 0 and size + more > self._max_bytes

    def _reopen(self) -> None:
        self._path.parent.mkdir(mode=0o700, parents=True, exist_ok=True)
        fresh = _opened(self._path)
        before = os.fstat(self._descriptor)
        for number in (1, 2, self._descriptor):  # what native code prints goes along
            with contextlib.suppress(OSError):
                if os.path.samestat(os.fstat(number), before):
                    os.dup2(fresh, number, inheritable=number in (1, 2))
        os.close(fresh)

    @contextlib.contextmanager
    def _one_free_descriptor(self) -> Iterator[None]:
        # One is kept for this: the log goes on when the process has no other left.
        if self._spare is not None:
            os.close(self._spare)
        self._spare = None
        try:
            yield
        finally:
            self._keep_spare()

    def _keep_spare(self) -> None:
        with contextlib.suppress(OSError):
            self._spare = os.open(os.devnull, os.O_RDONLY)


class SharedLogHandler(logging.Handler):
    """Writes each line before it returns."""

    def __init__(self, path: Path, max_bytes: int, kept: int) -> None:
        super().__init__()
        self._file = LogFile(path, max_bytes, kept)

    def emit(self, record: logging.LogRecord) -> None:
        self._file.write(_line(self, record))

    def close(self) -> None:
        self._file.close()
        super().close()


class DeferredLogHandler(logging.Handler):
    """Hands lines to a thread that writes them: a slow disk or a rotation holds up no request."""

    def __init__(self, path: Path, max_bytes: int, kept: int) -> None:
        super().__init__()
        self._file = LogFile(path, max_bytes, kept)
        self._lines: SimpleQueue[bytes | None] = SimpleQueue()
        self._writer = threading.Thread(target=self._write_all, daemon=True, name="log writer")
        self._writer.start()

    def emit(self, record: logging.LogRecord) -> None:
        if self._lines.qsize() < _MOST_WAITING:
            self._lines.put(_line(self, record))

    def close(self) -> None:
        if self._writer.is_alive():
            self._lines.put(None)
            self._writer.join(_CLOSE_SECONDS)
        super().close()

    def _write_all(self) -> None:
        while (line := self._lines.get()) is not None:
            self._file.write(line)


def set_up_logging(
    path: Path, max_bytes: int, kept: int, console: bool, lines: logging.Formatter
) -> None:
    """Send everything that is logged in this process to the log, and to stderr if wanted."""
    handlers: list[logging.Handler] = [DeferredLogHandler(path, max_bytes, kept)]
    if console:
        handlers.append(logging.StreamHandler(sys.stderr))
    for handler in handlers:
        handler.setFormatter(lines)
    logging.basicConfig(handlers=handlers, level=logging.INFO, force=True)
    logging.raiseExceptions = False  # a line that cannot be made costs nobody a request


def _line(handler: logging.Handler, record: logging.LogRecord) -> bytes:
    try:
        text = handler.format(record)
    except Exception as error:  # noqa: BLE001  arguments that do not fit the text can raise anything
        text = f"{record.name}: a line could not be made of {record.msg!r}: {error!r}"
    return text.encode("utf-8", "backslashreplace") + b"\n"


def _opened(path: Path) -> int:
    path.parent.mkdir(mode=0o700, parents=True, exist_ok=True)
    return os.open(path, os.O_RDWR | os.O_APPEND | os.O_CREAT | getattr(os, "O_BINARY", 0), 0o600)
