"""How much runs and waits, and whether one more would be answered in time."""

import math

from .errors import PoolFull

_SMOOTHING = 0.1


class Backlog:
    """Counts calls for `threads` workers with room for `queue` that wait."""

    def __init__(self, threads: int, queue: int) -> None:
        self.held = 0
        """How many calls run or wait."""
        self._threads = threads
        self._room = threads + queue
        self._mean_seconds = 0.5

    def check_room(self, seconds: float) -> None:
        """Raise PoolFull when a call would be refused now.

        That is when the queue is full, or so slow that its result would hardly be there in time.
        """
        wait = self.held / self._threads * self._mean_seconds
        if self.held >= self._room or wait > seconds:
            raise PoolFull(max(1, math.ceil(wait)))

    def took(self, seconds: float) -> None:
        """Note how long a call ran."""
        self._mean_seconds += _SMOOTHING * (seconds - self._mean_seconds)
