"""Replaces a file in one step, so that a crash leaves the old or the new content, never a half."""

import os
import tempfile
from pathlib import Path


def write_atomic(path: Path, data: bytes, mode: int) -> None:
    """Write `data` beside `path`, force it to disk and rename it over `path`.

    A symbolic link keeps pointing to its target, which is replaced. Raises OSError.
    """
    target = Path(os.path.realpath(path))
    handle, beside = tempfile.mkstemp(prefix=f".{target.name}.", dir=target.parent)
    try:
        with os.fdopen(handle, "wb") as file:
            file.write(data)
            file.flush()
            os.fsync(file.fileno())
        os.chmod(beside, mode)
        os.replace(beside, target)
    except BaseException:
        os.unlink(beside)
        raise
    _sync_directory(target.parent)


def _sync_directory(directory: Path) -> None:
    if os.name != "posix":  # other systems cannot open a directory; the rename is durable there
        return
    descriptor = os.open(directory, os.O_RDONLY)
    try:
        os.fsync(descriptor)
    finally:
        os.close(descriptor)
