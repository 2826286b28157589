"""Runs the web application on a socket, loading the engine beside it."""

import asyncio
import contextlib
import logging
import signal
import socket
import threading
from collections.abc import Awaitable, Callable, Iterator
from types import FrameType

import uvicorn

from ..config.settings import Settings
from ..daemon.listeners import Listeners
from ..daemon.notify import notify
from ..workers.errors import WorkerLost
from .app import create_app
from .crowd import Crowd
from .descriptors import BACKLOG, affordable_connections
from .heads import MOST_BYTES
from .last_resort import end_at_last
from .protocol import guarded_protocol
from .state import ServiceState

_log = logging.getLogger("zelvoran_anpr.server")
_CLOSE_SECONDS = 8
Work = Callable[[], Awaitable[None]]
TakePort = Callable[[], Listeners]


class Service:
    """One server: answers from the first moment, is ready when its models are warm."""

    def __init__(self, settings: Settings, token: str, on_ready: Callable[[], None]) -> None:
        self.failure: str | None = None
        """One line on why the service could not work, set when `run` has returned."""
        self._state = ServiceState(settings, token)
        self._on_ready = on_ready
        limits = settings.limits
        crowd = Crowd(affordable_connections(limits.connections))
        self._server = _Server(
            uvicorn.Config(
                create_app(self._state),
                http=guarded_protocol(limits.header_seconds, limits.body_seconds, crowd),
                h11_max_incomplete_event_size=2 * MOST_BYTES,
                backlog=BACKLOG,
                ws="none",
                log_config=None,
                access_log=False,  # ours also tells how long an answer took
                proxy_headers=False,  # the peer's address decides what it may do
                server_header=False,
                timeout_graceful_shutdown=int(limits.stop_seconds) + 1,
                lifespan="off",
                loop="asyncio",
            ),
            self._state,
            self._load,
            limits.stop_seconds + _CLOSE_SECONDS,
        )

    def run(self, listeners: list[socket.socket]) -> None:
        """Serve until stopped. Ctrl+C ends it gracefully and then raises KeyboardInterrupt."""
        try:
            asyncio.run(self._server.serve(sockets=listeners))
        finally:
            _log.info("stopped")

    def run_prepared(self, take_port: TakePort) -> None:
        """Load first, then serve on the port that `take_port`, which may take long, returns."""
        try:
            asyncio.run(self._prepared(take_port))
        finally:
            _log.info("stopped")

    async def _prepared(self, take_port: TakePort) -> None:
        try:
            await self._state.load()
            listeners = await asyncio.to_thread(take_port)
        except Exception as error:  # noqa: BLE001  whatever it is, nobody is served
            self.failure = str(error)
            await self._state.close()
            return
        self._server.loaded = True
        try:
            await self._server.serve(sockets=listeners.sockets)
        finally:
            listeners.close()

    def stop(self) -> None:
        """Ask for a graceful end; may be called from any thread."""
        self._server.should_exit = True

    async def _load(self) -> None:
        try:
            if not self._server.loaded:
                await self._state.load()
            self._on_ready()
            _log.info("ready: the models are warm")
            notify("READY=1")
        except Exception as error:  # noqa: BLE001 (whatever it is, the server must not stay up useless)
            self.failure = f"The recognition models cannot be loaded: {error}"
            _log.error("%s", self.failure, exc_info=not isinstance(error, WorkerLost))
            self.stop()


class _Server(uvicorn.Server):
    """Takes SIGTERM as an ordinary end: the process has done all that was asked of it."""

    def __init__(
        self, config: uvicorn.Config, state: ServiceState, load: Work, patience: float
    ) -> None:
        super().__init__(config)
        self._state = state
        self.loaded = False
        """Whether the models were warm before the port was taken."""
        self._load = load
        self._patience = patience

    async def startup(self, sockets: list[socket.socket] | None = None) -> None:
        await super().startup(sockets)
        self._loading = asyncio.create_task(self._load())

    async def shutdown(self, sockets: list[socket.socket] | None = None) -> None:
        notify("STOPPING=1")
        end_at_last(self._patience)
        try:
            await super().shutdown(sockets)
        finally:
            self._loading.cancel()
            await self._state.close()

    def handle_exit(self, number: int, frame: FrameType | None) -> None:
        """Say that this server is going, and go once those who send requests could have heard.

        Whoever asks a second time does not want to wait.
        """
        seconds = self._state.settings.limits.drain_seconds
        if self._state.draining or not seconds:
            super().handle_exit(number, frame)
            return
        self._state.draining = True
        self._captured_signals.append(number)
        drain = threading.Timer(seconds, setattr, (self, "should_exit", True))
        drain.daemon = True
        drain.start()

    @contextlib.contextmanager
    def capture_signals(self) -> Iterator[None]:
        with super().capture_signals():
            try:
                yield
            finally:
                captured = [number for number in self._captured_signals if number != signal.SIGTERM]
                self._captured_signals[:] = captured
