"""The reading processes of one server: started, replaced and ended."""

import asyncio
import logging
from collections.abc import Callable, Coroutine
from typing import Any

from .errors import WorkerLost
from .memory_grants import MemoryGrants
from .process import WorkerProcess, start_worker

_log = logging.getLogger("zelvoran_anpr.server")
_LONGEST_PAUSE = 30.0
_CLOSE_SECONDS = 5


class Crew:
    """Calls `on_free` with every process that is warm. All is for the event loop's thread."""

    def __init__(self, options: dict[str, Any], on_free: Callable[[WorkerProcess], None]) -> None:
        self._options = options
        self._on_free = on_free
        self._grants = MemoryGrants(options["most_bytes"])
        self._warm: set[WorkerProcess] = set()
        self._starting = 0
        self._starts: set[asyncio.Task] = set()
        self._ends: set[asyncio.Task] = set()
        self._closed = False

    def __len__(self) -> int:
        """How many are warm or on the way to it."""
        return len(self._warm) + self._starting

    @property
    def pids(self) -> list[int]:
        return [worker.pid for worker in list(self._warm)]

    async def start_first(self) -> None:
        """Return when one process is warm. Raises WorkerLost with one line."""
        self._starting += 1
        # A caller that is cancelled leaves it to `close`, which waits for its end.
        await asyncio.shield(self._beside(self._starts, self._counted(self._start())))

    def start_another(self) -> None:
        if not self._closed:
            self._starting += 1
            self._beside(self._starts, self._counted(self._start_until_it_works()))

    def replace(self, worker: WorkerProcess, reason: str) -> None:
        if self._closed:
            return
        _log.warning("the reading process %d is replaced: %s", worker.pid, reason)
        self._end(worker)
        self.start_another()

    async def close(self) -> None:
        """Kill all and return when they have ended: whoever comes after finds none of them."""
        self._closed = True
        for start in self._starts:
            start.cancel()
        for worker in list(self._warm):
            self._end(worker)
        if awaited := self._starts | self._ends:
            await asyncio.wait(awaited, timeout=_CLOSE_SECONDS)

    async def _counted(self, start: Coroutine) -> None:
        try:
            await start
        finally:
            self._starting -= 1

    async def _start(self) -> None:
        worker = await start_worker(self._options, self._grants)
        self._warm.add(worker)
        self._on_free(worker)

    async def _start_until_it_works(self) -> None:
        pause = 1.0
        while True:
            try:
                return await self._start()
            except (WorkerLost, OSError) as error:
                _log.error("a reading process did not start: %s", error)
            await asyncio.sleep(pause)
            pause = min(2 * pause, _LONGEST_PAUSE)

    def _end(self, worker: WorkerProcess) -> None:
        worker.kill()
        self._warm.discard(worker)
        self._beside(self._ends, worker.ended())

    def _beside(self, tasks: set[asyncio.Task], work: Coroutine) -> asyncio.Task:
        task = asyncio.ensure_future(work)
        tasks.add(task)
        task.add_done_callback(tasks.discard)
        return task
