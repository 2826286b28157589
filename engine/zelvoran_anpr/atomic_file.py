"""Replaces a file in one step, so that a crash leaves the old or the new content, never a half."""

import contextlib
import os
import tempfile
from pathlib import Path


def write_atomic(path: Path, data: bytes, mode: int | None = None) -> None:
    """Write `data` beside `path`, force it to disk and rename it over `path`.

    Without `mode` a file keeps its own, and a new one is for its user only. A symbolic link keeps
    pointing to its target, which is replaced. Raises OSError, with the old content untouched.
    """
    target = Path(os.path.realpath(path))
    handle, beside = tempfile.mkstemp(prefix=f".{target.name}.", dir=target.parent)
    try:
        with os.fdopen(handle, "wb") as file:
            _take_after(target, beside, mode)
            file.write(data)
            file.flush()
            os.fsync(file.fileno())
        os.replace(beside, target)
    except BaseException:
        with contextlib.suppress(OSError):
            os.unlink(beside)
        raise
    _sync_directory(target.parent)


def _take_after(target: Path, beside: str, mode: int | None) -> None:
    with contextlib.suppress(FileNotFoundError):
        old = target.stat()
        mode = old.st_mode & 0o777 if mode is None else mode
        if hasattr(os, "chown"):  # what root changes stays its user's, who could not read it else
            with contextlib.suppress(PermissionError):
                os.chown(beside, old.st_uid, old.st_gid)
    os.chmod(beside, 0o600 if mode is None else mode)


def _sync_directory(directory: Path) -> None:
    # Not every system or file system can do this; the rename has happened in any case.
    with contextlib.suppress(OSError):
        descriptor = os.open(directory, os.O_RDONLY)
        try:
            os.fsync(descriptor)
        finally:
            os.close(descriptor)
