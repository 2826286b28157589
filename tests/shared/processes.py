"""What tests ask about processes that they did not start themselves, and waiting for it."""

import socket
import time
from collections.abc import Callable

import psutil


def alive(pid: int) -> bool:
    """A process that has ended counts as gone, even where its parent never asks for its status."""
    try:
        return psutil.Process(pid).status() != psutil.STATUS_ZOMBIE
    except psutil.NoSuchProcess:
        return False


def free_port() -> int:
    """A loopback port on which nobody listened a moment ago."""
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_until(condition: Callable[[], object], seconds: float = 60) -> None:
    deadline = time.monotonic() + seconds
    while not condition():
        assert time.monotonic() < deadline, "did not happen in time"
        time.sleep(0.02)
