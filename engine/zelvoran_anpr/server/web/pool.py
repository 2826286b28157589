"""A fixed number of worker threads before a queue that refuses what it cannot take."""

import asyncio
import threading
import time
from collections.abc import Callable
from concurrent.futures import Future, ThreadPoolExecutor
from typing import Any, TypeVar

from ..workers.backlog import Backlog
from ..workers.errors import PoolFull

__all__ = ["BoundedPool", "PoolFull"]

Result = TypeVar("Result")


class BoundedPool:
    """Runs calls on `threads` threads; at most `queue` further ones wait."""

    def __init__(self, threads: int, queue: int, name: str) -> None:
        self.threads = threads
        self._backlog = Backlog(threads, queue)
        self._lock = threading.Lock()
        self._executor = ThreadPoolExecutor(threads, thread_name_prefix=name)

    @property
    def held(self) -> int:
        """How many calls run or wait."""
        return self._backlog.held

    def check_room(self, seconds: float) -> None:
        """Raise PoolFull when a call would be refused now."""
        self._backlog.check_room(seconds)

    async def run(self, call: Callable[..., Result], *arguments: Any, seconds: float) -> Result:
        """Run a call and return its result.

        Raises PoolFull, or asyncio.TimeoutError when the result is not there in time: a call
        that still waits is dropped then, one that runs holds its thread until it ends.
        """
        with self._lock:
            self.check_room(seconds)
            self._backlog.held += 1
        future = self._executor.submit(self._timed, call, *arguments)
        future.add_done_callback(self._release)
        return await asyncio.wait_for(asyncio.wrap_future(future), seconds)

    def close(self) -> None:
        """Drop what waits and return when what runs has ended."""
        self._executor.shutdown(wait=True, cancel_futures=True)

    def _timed(self, call: Callable[..., Result], *arguments: Any) -> Result:
        begun = time.monotonic()
        try:
            return call(*arguments)
        finally:
            self._backlog.took(time.monotonic() - begun)

    def _release(self, _: Future) -> None:
        with self._lock:
            self._backlog.held -= 1
