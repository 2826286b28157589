"""Failures of the disk as one line: full, or not writable, and what to do about it."""

import errno
from collections.abc import Iterator
from contextlib import contextmanager

from ..errors import MmcError

_FULL = {errno.ENOSPC, getattr(errno, "EDQUOT", errno.ENOSPC), errno.EFBIG}


@contextmanager
def disk_errors(doing: str) -> Iterator[None]:
    """Turn every OSError of the block into an MmcError; `doing` reads "writing x"."""
    try:
        yield
    except OSError as error:
        if error.errno in _FULL:
            text = f"the disk is full while {doing}; free some space and run it again to continue"
            raise MmcError(text) from None
        where = f" ({error.filename})" if error.filename else ""
        raise MmcError(f"{doing} failed: {error.strerror or error}{where}") from None
