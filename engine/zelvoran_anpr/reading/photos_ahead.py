"""Photos in flight: what will be asked for is read beforehand, a few photos ahead, on all cores.

What is read beforehand counts only if asking would give the same: files that have changed since,
files that are no plain files and photos that fail are read when they are asked for, as ever.
"""

import atexit
import os
import stat
import threading
from collections import deque
from collections.abc import Callable, Iterable
from contextlib import ExitStack

from .plate_result import ReadResult

_LARGE_PIXELS = 6_000_000  # of unpacked photos that take turns
_MOST_AT_ONCE = 8  # beyond that Python's own share of the work keeps the threads waiting
_LAST_SECONDS = 2.0  # what photos under way get to end themselves

Admit = Callable[[int], None]
"""Called with the number of pixels that are to be unpacked; returns when there is room."""


class _Expected:
    """One photo that will be asked for."""

    def __init__(self, path: str) -> None:
        self.path = path
        self.done = threading.Event()
        self._answer: ReadResult | None = None
        self._state: tuple | None = None

    def read(self, read: Callable[[str], ReadResult]) -> None:
        try:
            self._state = _state(self.path)
            if self._state:
                self._answer = read(self.path)
        except Exception:  # noqa: BLE001  asked for, it is read again and fails in its own place
            self._answer = None
        finally:
            self.done.set()

    def answer(self) -> ReadResult | None:
        """Wait; return None where it must be read anew."""
        self.done.wait()
        return self._answer if self._answer and _state(self.path) == self._state else None


class PhotosAhead:
    """Reads the photos of a list in threads until they are asked for."""

    def __init__(
        self, read: Callable[[str, Admit], ReadResult], paths: Iterable[str], threads: int
    ) -> None:
        """`read` raises an error for photos about which there is more to say than the result."""
        self._read = read
        self._waiting = deque(_Expected(path) for path in paths)
        self._begun = 0  # how many of those that wait
        self._most_begun = 2 * threads
        self._stopped = False
        self._changed = threading.Condition()
        self._large = threading.RLock()
        atexit.register(self.stop)  # a process must not end in the middle of native code
        self._threads = [threading.Thread(target=self._work, daemon=True) for _ in range(threads)]
        for thread in self._threads:
            thread.start()

    def result(self, path: str) -> ReadResult | None:
        """Return what was read of a photo; None where it must be read now."""
        expected = self._taken(path)
        return expected.answer() if expected else None

    def stop(self) -> None:
        """Begin no more photos, and wait a little for those under way."""
        with self._changed:
            self._stopped = True
            self._changed.notify_all()
        for thread in self._threads:
            thread.join(_LAST_SECONDS)
        atexit.unregister(self.stop)

    def _taken(self, path: str) -> _Expected | None:
        """Return a photo that was begun; those before it are not asked for any more."""
        with self._changed:
            place = next((i for i, one in enumerate(self._waiting) if one.path == path), None)
            if place is None:
                return None
            taken = [self._waiting.popleft() for _ in range(place + 1)][-1]
            was_begun = place < self._begun
            self._begun = max(0, self._begun - place - 1)
            self._changed.notify_all()
            return taken if was_begun else None

    def _work(self) -> None:
        while expected := self._to_begin():
            with ExitStack() as held:
                expected.read(lambda path, held=held: self._read(path, self._admit(held)))

    def _to_begin(self) -> _Expected | None:
        with self._changed:
            self._changed.wait_for(lambda: self._over() or self._begun < self._most_begun)
            if self._over():
                return None
            self._begun += 1
            return self._waiting[self._begun - 1]

    def _over(self) -> bool:
        return self._stopped or self._begun == len(self._waiting)

    def _admit(self, held: ExitStack) -> Admit:
        def admit(pixels: int) -> None:
            if pixels > _LARGE_PIXELS:
                held.enter_context(self._large)  # until the photo is read

        return admit


def threads_for(backend: str, cores: int) -> int:
    """Return how many photos are worth being read at once."""
    if backend == "directml":
        return 1  # its sessions are for one thread at a time
    return max(1, min(cores, _MOST_AT_ONCE))


def _state(path: str) -> tuple | None:
    """Return what changes when a file does; None where it is no plain file."""
    try:
        found = os.stat(path)
    except (OSError, ValueError):
        return None
    if not stat.S_ISREG(found.st_mode):
        return None
    return found.st_dev, found.st_ino, found.st_size, found.st_mtime_ns, found.st_ctime_ns
