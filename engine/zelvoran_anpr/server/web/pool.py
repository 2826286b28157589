"""A fixed number of worker threads before a queue that refuses what it cannot take."""

import asyncio
import math
import threading
import time
from collections.abc import Callable
from concurrent.futures import Future, ThreadPoolExecutor
from typing import Any, TypeVar

Result = TypeVar("Result")
_SMOOTHING = 0.1


class PoolFull(Exception):
    """The queue is full; `retry_after` is in how many whole seconds it may not be."""

    def __init__(self, retry_after: int) -> None:
        super().__init__("The server is busy")
        self.retry_after = retry_after


class BoundedPool:
    """Runs calls on `threads` threads; at most `queue` further ones wait."""

    def __init__(self, threads: int, queue: int, name: str) -> None:
        self.threads = threads
        self._room = threads + queue
        self._held = 0
        self._mean_seconds = 0.5
        self._lock = threading.Lock()
        self._executor = ThreadPoolExecutor(threads, thread_name_prefix=name)

    @property
    def held(self) -> int:
        """How many calls run or wait."""
        return self._held

    def check_room(self, seconds: float) -> None:
        """Raise PoolFull when a call would be refused now.

        That is when the queue is full, or so slow that its result would hardly be there in time.
        """
        wait = self._expected_wait()
        if self._held >= self._room or wait > seconds:
            raise PoolFull(max(1, math.ceil(wait)))

    async def run(self, call: Callable[..., Result], *arguments: Any, seconds: float) -> Result:
        """Run a call and return its result.

        Raises PoolFull, or asyncio.TimeoutError when the result is not there in time: a call
        that still waits is dropped then, one that runs holds its thread until it ends.
        """
        with self._lock:
            self.check_room(seconds)
            self._held += 1
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
            taken = time.monotonic() - begun
            self._mean_seconds += _SMOOTHING * (taken - self._mean_seconds)

    def _release(self, _: Future) -> None:
        with self._lock:
            self._held -= 1

    def _expected_wait(self) -> float:
        return self._held / self.threads * self._mean_seconds
