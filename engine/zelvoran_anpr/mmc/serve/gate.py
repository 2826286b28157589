"""Requests under way: new ones are let in until the gate closes, and closing waits for the rest."""

import threading
from collections.abc import Iterator
from contextlib import contextmanager

from ..errors import MmcError


class Gate:
    """`with gate.passing():` around each request; `shut()` returns once the last one has left."""

    def __init__(self) -> None:
        self._change = threading.Condition()
        self._inside = 0
        self._open = False

    def open(self) -> None:
        with self._change:
            self._open = True

    @contextmanager
    def passing(self) -> Iterator[None]:
        with self._change:
            if not self._open:
                raise MmcError("the MMC backend is not running")
            self._inside += 1
        try:
            yield
        finally:
            with self._change:
                self._inside -= 1
                self._change.notify_all()

    def busy(self) -> bool:
        with self._change:
            return self._inside > 0

    def shut(self, timeout: float) -> bool:
        """Whether everybody left within `timeout` seconds."""
        with self._change:
            self._open = False
            return self._change.wait_for(lambda: self._inside == 0, timeout)
