"""Several reading processes before a queue that refuses what it cannot take."""

import asyncio
import os
import time
from collections import deque
from typing import Any

from .backlog import Backlog
from .crew import Crew
from .errors import NotReady
from .frames import Frame
from .process import WorkerProcess


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
        self._crew = Crew(options, self._freed)
        self._backlog = Backlog(threads, queue)
        self._most_seconds = most_seconds
        self._idle: deque[WorkerProcess] = deque()
        self._waiting: deque[asyncio.Future[WorkerProcess]] = deque()
        self._jobs: set[asyncio.Task] = set()
        self._free_at = time.monotonic()

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
        return self._crew.pids

    def check_room(self, seconds: float) -> None:
        """Raise PoolFull when a photo would be refused now."""
        self._backlog.check_room(seconds)

    def check_ready(self) -> None:
        """Raise NotReady while the models load."""
        if not self.ready:
            raise NotReady("The models are still loading")

    async def start(self) -> None:
        """Return when one process is warm; the others follow. Raises WorkerLost with one line."""
        await self._crew.start_first()
        self.ready = True
        for _ in range(min(self.threads, os.cpu_count() or 1) - 1):
            self._crew.start_another()

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
        job = asyncio.ensure_future(self._job(place, photo, region, crops))
        self._jobs.add(job)
        job.add_done_callback(self._done)
        try:
            return await asyncio.wait_for(asyncio.shield(job), seconds)
        except (asyncio.TimeoutError, asyncio.CancelledError):
            if not place or place[0].waits_for_memory:
                job.cancel()
            raise

    async def close(self) -> None:
        """Kill all processes and return when they have ended."""
        for job in self._jobs:
            job.cancel()
        await self._crew.close()

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
                self._crew.replace(worker, str(error) or "a photo kept it busy for too long")
            raise
        self._backlog.took(time.monotonic() - begun)
        self._freed(worker)
        return result

    async def _free_worker(self) -> WorkerProcess:
        while self._idle:
            worker = self._idle.pop()  # the one used last: the others may stay swapped out
            if worker.running:
                return worker
            self._crew.replace(worker, "it ended between two photos")
        if len(self._crew) < self.threads:
            self._crew.start_another()
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

    def _done(self, job: asyncio.Task) -> None:
        # What runs on without its client still holds its place.
        self._jobs.discard(job)
        self._backlog.held -= 1
        if not job.cancelled():
            job.exception()  # was told to whoever still waited
