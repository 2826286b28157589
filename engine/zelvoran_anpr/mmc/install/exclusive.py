"""One set-up or removal at a time; the system lets go of the lock when its holder dies."""

from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path

from filelock import FileLock, Timeout

from ..errors import MmcError
from ..fetch.progress import hint


@contextmanager
def exclusive(folder: Path, busy: str, wait: bool = True) -> Iterator[None]:
    """Own `folder` during the block: waits for who has it, or raises `busy` with wait=False."""
    folder.parent.mkdir(parents=True, exist_ok=True)
    lock = FileLock(folder.parent / f".{folder.name}.lock", mode=0o600)
    try:
        lock.acquire(timeout=0)
    except Timeout:
        if not wait:
            raise MmcError(busy) from None
        hint(f"{busy}; waiting for it")
        lock.acquire()
    try:
        yield
    finally:
        lock.release()
