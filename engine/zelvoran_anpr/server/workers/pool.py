"""Several reading processes before a queue that refuses what it cannot take."""

import asyncio
import logging
import os
import time
from collections import deque
from typing import Any

from .backlog import Backlog
from .errors import NotReady, WorkerLost
from .frames import Frame
from .memory_grants import MemoryGrants
from .process import WorkerProcess, start_worker

_log = logging.getLogger("zelvoran_anpr.server")
_LONGEST_PAUSE = 30.0
_CLOSE_SECONDS = 5


class ReaderPool:
    """Reads at most `threads` photos at the same time; at most `queue` further ones wait.

    A process that a photo keeps busy for more than `most_seconds` is killed and replaced. All
    methods are for the event loop's thread; the plain properties may be read from any.
    """

    def __init__(
        self, options: dict[str, Any], threads: int, queue: int, most_seconds: float
    ) -> None:
        self.threads = threads
        self.ready = False
        """Whether the models were warm once."""
        self._options = options
        self._backlog = Backlog(threads, queue)
        self._most_seconds = most_seconds
        self._grants = MemoryGrants(options["most_bytes"])
        self._workers: set[WorkerProcess] = set()
        self._idle: deque[WorkerProcess] = deque()
        self._waiting: deque[asyncio.Future[WorkerProcess]] = deque()
        self._starting = 0
        self._tasks: set[asyncio.Task] = set()
        self._free_at = time.monotonic()
        self._closed = False

    @property
    def held(self) -> int:
        """How many photos are read or wait."""
        return self._backlog.held

    @property
    def stuck(self) -> bool:
        """Whether no process has been free for longer than a photo may take."""
        return not self._idle and time.monotonic() - self._free_at > self._most_seconds

    @property
    def pids(self) -> list[int]:
        return [worker.pid for worker in list(self._workers)]

    def check_room(self, seconds: float) -> None:
        """Raise PoolFull when a photo would be refused now."""
        self._backlog.check_room(seconds)

    def check_ready(self) -> None:
        """Raise NotReady while the models load."""
        if not self.ready:
            raise NotReady("The models are still loading")

    async def start(self) -> None:
        """Return when one process is warm; the others follow. Raises WorkerLost with one line."""
        self._starting += 1
        try:
            self._freed(await self._started())
        finally:
            self._starting -= 1
        self.ready = True
        for _ in range(min(self.threads, os.cpu_count() or 1) - 1):
            self._start_another()

    async def read(self, photo: bytes, region: str, crops: bool, seconds: float) -> Frame:
        """Return what `WorkerProcess.read` does.

        Raises what that raises, PoolFull, NotReady, and asyncio.TimeoutError when it is not there
        in time: a photo that still waits is dropped then, as when this is cancelled; one that is
        being read holds its process until it ends or is ended.
        """
        self.check_ready()
        self.check_room(seconds)
        self._backlog.held += 1
        place: list[WorkerProcess] = []
        job = self._spawned(self._job(place, photo, region, crops))
        job.add_done_callback(self._done)
        try:
            return await asyncio.wait_for(asyncio.shield(job), seconds)
        except (asyncio.TimeoutError, asyncio.CancelledError):
            if not place or place[0].waits_for_memory:
                job.cancel()
            raise

    async def close(self) -> None:
        """Kill all processes and return when they have ended."""
        self._closed = True
        for task in self._tasks:
            task.cancel()
        for worker in self._workers:
            worker.kill()
        ends = [asyncio.ensure_future(worker.ended()) for worker in self._workers]
        if ends:
            await asyncio.wait(ends, timeout=_CLOSE_SECONDS)

    async def _job(
        self, place: list[WorkerProcess], photo: bytes, region: str, crops: bool
    ) -> Frame:
        worker = await self._free_worker()
        place.append(worker)
        return await self._reading(worker, photo, region, crops)

    async def _reading(
        self, worker: WorkerProcess, photo: bytes, region: str, crops: bool
    ) -> Frame:
        begun = time.monotonic()
        try:
            result = await worker.read(photo, region, crops, self._most_seconds)
        except BaseException as error:
            if worker.in_step:
                self._freed(worker)
            else:
                self._replace(worker, str(error) or "a photo kept it busy for too long")
            raise
        self._backlog.took(time.monotonic() - begun)
        self._freed(worker)
        return result

    async def _free_worker(self) -> WorkerProcess:
        while self._idle:
            worker = self._idle.pop()  # the one used last: the others may stay swapped out
            if worker.running:
                return worker
            self._replace(worker, "it ended between two photos")
        if len(self._workers) + self._starting < self.threads:
            self._start_another()
        turn: asyncio.Future[WorkerProcess] = asyncio.get_running_loop().create_future()
        self._waiting.append(turn)
        try:
            return await turn
        except asyncio.CancelledError:
            if turn.done() and not turn.cancelled():
                self._freed(turn.result())
            raise

    def _freed(self, worker: WorkerProcess) -> None:
        self._free_at = time.monotonic()
        while self._waiting:
            turn = self._waiting.popleft()
            if not turn.done():
                turn.set_result(worker)
                return
        self._idle.append(worker)

    def _replace(self, worker: WorkerProcess, reason: str) -> None:
        _log.warning("the reading process %d is replaced: %s", worker.pid, reason)
        worker.kill()
        self._workers.discard(worker)
        self._spawned(worker.ended())
        self._start_another()

    def _start_another(self) -> None:
        if not self._closed:
            self._starting += 1
            self._spawned(self._start_until_it_works())

    async def _start_until_it_works(self) -> None:
        pause = 1.0
        try:
            while True:
                try:
                    self._freed(await self._started())
                    return
                except (WorkerLost, OSError) as error:
                    _log.error("a reading process did not start: %s", error)
                await asyncio.sleep(pause)
                pause = min(2 * pause, _LONGEST_PAUSE)
        finally:
            self._starting -= 1

    async def _started(self) -> WorkerProcess:
        worker = await start_worker(self._options, self._grants)
        self._workers.add(worker)
        return worker

    def _spawned(self, work: Any) -> asyncio.Task:
        task = asyncio.ensure_future(work)
        self._tasks.add(task)
        task.add_done_callback(self._tasks.discard)
        return task

    def _done(self, job: asyncio.Task) -> None:
        # What runs on without its client still holds its place.
        self._backlog.held -= 1
        if not job.cancelled():
            job.exception()  # was told to whoever still waited
