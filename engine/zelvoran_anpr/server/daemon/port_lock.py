"""One start at a time for each port: whoever comes second sees what the first has made of it."""

import contextlib
from collections.abc import Iterator

from filelock import FileLock, Timeout

from ..config.paths import get_config_dir, make_private_dir


@contextlib.contextmanager
def port_lock(port: int, seconds: float) -> Iterator[None]:
    """Hold the lock of a port. Raises RuntimeError when another one holds it for so long."""
    folder = make_private_dir(make_private_dir(get_config_dir()) / "locks")
    lock = FileLock(folder / f"port-{port}.lock", mode=0o600)
    try:
        lock.acquire(timeout=seconds)
    except Timeout:
        raise RuntimeError(
            f"Another start on port {port} is still under way; try again later"
        ) from None
    try:
        yield
    finally:
        lock.release()
