"""The server's side of one reading process."""

import asyncio
import contextlib
import os
import sys
from collections.abc import AsyncIterator
from pathlib import Path
from typing import Any

from .errors import PhotoFailed, PhotoRefused, WorkerLost
from .frames import Frame, packed_head, receive_frame
from .memory_grants import MemoryGrants

_PACKAGE_PARENT = Path(__file__).parents[3]
_START_SECONDS = 120


class WorkerProcess:
    """Reads one photo at a time; built by `start_worker`."""

    def __init__(self, process: asyncio.subprocess.Process, grants: MemoryGrants) -> None:
        self.in_step = True
        """Whether it waits for a photo; one that does not, and was left, must be killed."""
        self.waits_for_memory = False
        self._process = process
        self._grants = grants

    @property
    def pid(self) -> int:
        return self._process.pid

    @property
    def running(self) -> bool:
        return self._process.returncode is None

    async def read(self, photo: bytes, region: str, crops: bool, seconds: float) -> Frame:
        """Return `plates` (`ocr`, `ocr_conf`, `ltrb`, `ltrb_conf`), `width`, `height`, `seconds`
        and `crops` (height and width of each vehicle), whose RGB pixels follow one another.

        Raises PhotoRefused, PhotoFailed, WorkerLost when the process has ended, and
        asyncio.TimeoutError when it is busy for so long, less what it waits for memory.
        """
        self.in_step = False
        request = self._asked({"region": region, "crops": crops}, photo)
        head, payload = await asyncio.wait_for(request, seconds)
        if "needs" in head:
            async with self._granted(int(head["needs"])):
                request = self._asked({"granted": True}, b"")
                head, payload = await asyncio.wait_for(request, seconds)
        self.in_step = True
        if "refused" in head:
            raise PhotoRefused(str(head["refused"]), int(head["status"]))
        if "failed" in head:
            raise PhotoFailed(str(head["failed"]))
        return head, payload

    @contextlib.asynccontextmanager
    async def _granted(self, needed: int) -> AsyncIterator[None]:
        async with contextlib.AsyncExitStack() as stack:
            self.waits_for_memory = True
            try:
                await stack.enter_async_context(self._grants.granted(needed))
            except asyncio.CancelledError:
                await self._asked({"granted": False}, b"")
                self.in_step = True
                raise
            finally:
                self.waits_for_memory = False
            yield

    def kill(self) -> None:
        with contextlib.suppress(ProcessLookupError):
            self._process.kill()

    async def ended(self) -> None:
        """Return when the process is gone and collected."""
        await self._process.wait()

    async def begin(self, options: dict[str, Any]) -> None:
        """Wait until the models are warm. Raises WorkerLost with one line."""
        head, _ = await self._asked({**options, "server": os.getpid()}, b"")
        if "ready" not in head:
            raise WorkerLost(str(head.get("failed")))

    async def _asked(self, head: dict[str, Any], payload: bytes) -> Frame:
        await self._send(head, payload)
        return await self._receive()

    async def _send(self, head: dict[str, Any], payload: bytes) -> None:
        pipe = self._process.stdin
        try:
            pipe.write(packed_head(head, len(payload)))
            if payload:
                pipe.write(payload)
            await pipe.drain()
        except OSError:
            raise self._lost() from None

    async def _receive(self) -> Frame:
        try:
            return await receive_frame(self._process.stdout)
        except (asyncio.IncompleteReadError, ValueError, OSError):
            raise self._lost() from None

    def _lost(self) -> WorkerLost:
        status = self._process.returncode
        told = "" if status is None else f" with status {status}"
        return WorkerLost(f"the reading process {self.pid} ended{told}")


async def start_worker(options: dict[str, Any], grants: MemoryGrants) -> WorkerProcess:
    """Return a process whose models are warm.

    Raises WorkerLost. Must be called on the thread that runs as long as the server: on Linux the
    process ends with the thread that started it.
    """
    process = await asyncio.create_subprocess_exec(
        sys.executable, "-m", f"{__package__}.worker",
        stdin=asyncio.subprocess.PIPE, stdout=asyncio.subprocess.PIPE,
        env=_environment(), start_new_session=True,
    )  # fmt: skip
    worker = WorkerProcess(process, grants)
    try:
        await asyncio.wait_for(worker.begin(options), _START_SECONDS)
    except BaseException as error:
        worker.kill()
        await worker.ended()
        if isinstance(error, asyncio.TimeoutError):
            raise WorkerLost(f"the models were not loaded within {_START_SECONDS} s") from None
        raise
    return worker


def _environment() -> dict[str, str]:
    # The same package as here, whatever folder the server runs in, and nothing out of that folder.
    given = os.environ.get("PYTHONPATH", "")
    paths = [os.path.abspath(path) for path in given.split(os.pathsep) if path]
    path = os.pathsep.join([*paths, str(_PACKAGE_PARENT)])
    return {**os.environ, "PYTHONPATH": path, "PYTHONSAFEPATH": "1"}
