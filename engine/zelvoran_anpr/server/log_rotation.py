"""Moves what a log holds to the file with `.1` behind its name, and empties the log in place.

On a full disk it is moved piece by piece, each piece being freed in the log once it is written.
"""

import ctypes
import errno
import os
import sys
import time
from pathlib import Path

FULL = (errno.ENOSPC, errno.EDQUOT)
"""The system's numbers for a disk that takes no more."""

_FOLLOWERS_SECONDS = 0.1
_PIECE_BYTES = 64 * 1024
_PUNCH_HOLE_KEEP_SIZE = 3  # FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE


def rotate(log: int, path: Path, kept: int) -> None:
    """Empty an open log into `path`.1, after the older ones made room. Raises OSError.

    Needs one descriptor. The caller keeps other writers away. After an error everything is still
    in one of the files, and the next call goes on.
    """
    begun = _first_data(log)
    if begun == 0:
        _make_room(path, kept)
    flags = os.O_WRONLY | os.O_CREAT | os.O_APPEND | getattr(os, "O_BINARY", 0)
    archive = os.open(f"{path}.1", flags, 0o600)
    try:
        _move(log, archive, begun)
    finally:
        os.close(archive)


def drop_oldest(path: Path, kept: int) -> bool:
    """Remove the oldest of the old logs; return False when there is none."""
    for number in range(kept, 0, -1):
        oldest = Path(f"{path}.{number}")
        if oldest.is_file():
            oldest.unlink()
            return True
    return False


def _make_room(path: Path, kept: int) -> None:
    newest = Path(f"{path}.1")
    if not newest.exists() or newest.stat().st_size == 0:  # an earlier attempt came no further
        return
    for number in range(kept - 1, 0, -1):
        older = Path(f"{path}.{number}")
        if older.exists():
            os.replace(older, f"{path}.{number + 1}")
    if kept == 1:
        newest.unlink()


def _move(log: int, archive: int, begun: int) -> None:
    size = os.fstat(archive).st_size
    try:
        at = _copy(log, archive, begun, punch=False)
    except OSError as error:
        os.ftruncate(archive, size)
        if error.errno not in FULL:
            raise
        time.sleep(_FOLLOWERS_SECONDS)  # they would read holes
        at = _copy(log, archive, begun, punch=True)
    # What native code printed meanwhile without asking comes along; then followers get a moment.
    time.sleep(_FOLLOWERS_SECONDS)
    _copy(log, archive, at, punch=False)
    os.ftruncate(log, 0)
    time.sleep(_FOLLOWERS_SECONDS)  # a log that grew as long again would not look emptied


def _copy(log: int, archive: int, begun: int, punch: bool) -> int:
    """Append the log from `begun` on to the archive; return where it ended."""
    at = os.lseek(log, begun, os.SEEK_SET)
    while piece := os.read(log, _PIECE_BYTES):
        written = os.write(archive, piece)
        if punch:
            _free(log, at, written)
        at = os.lseek(log, at + written, os.SEEK_SET)
    return at


def _first_data(log: int) -> int:
    """Return where the log begins: not at 0 when an earlier move was cut short."""
    try:
        return os.lseek(log, 0, os.SEEK_DATA) if hasattr(os, "SEEK_DATA") else 0
    except OSError:  # nothing in it
        return 0


def _free(log: int, begin: int, length: int) -> None:
    if sys.platform != "linux":
        raise OSError(errno.ENOSPC, os.strerror(errno.ENOSPC))
    fallocate = ctypes.CDLL(None, use_errno=True).fallocate
    fallocate.argtypes = [ctypes.c_int, ctypes.c_int, ctypes.c_int64, ctypes.c_int64]
    if fallocate(log, _PUNCH_HOLE_KEEP_SIZE, begin, length) != 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))
