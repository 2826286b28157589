"""Ends connections of clients that send their request, or take their answer, too slowly."""

import asyncio

from uvicorn.protocols.http.h11_impl import H11Protocol


def guarded_protocol(header_seconds: float, drain_seconds: float) -> type[asyncio.Protocol]:
    """Return a protocol that waits so long for a request's head, and for a full send buffer."""

    class GuardedProtocol(H11Protocol):
        _head_timer: asyncio.TimerHandle | None = None
        _drain_timer: asyncio.TimerHandle | None = None

        def connection_made(self, transport: asyncio.Transport) -> None:
            super().connection_made(transport)
            self._watch_head()

        def data_received(self, data: bytes) -> None:
            super().data_received(data)
            self._watch_head()

        def connection_lost(self, exc: Exception | None) -> None:
            self._head_timer = _cancelled(self._head_timer)
            self._drain_timer = _cancelled(self._drain_timer)
            super().connection_lost(exc)

        def pause_writing(self) -> None:
            super().pause_writing()
            self._drain_timer = self.loop.call_later(drain_seconds, self.transport.abort)

        def resume_writing(self) -> None:
            self._drain_timer = _cancelled(self._drain_timer)
            super().resume_writing()

        def _watch_head(self) -> None:
            answering = self.cycle is not None and not self.cycle.response_complete
            if answering:
                self._head_timer = _cancelled(self._head_timer)
            elif self._head_timer is None:
                self._head_timer = self.loop.call_later(header_seconds, self._head_late)

        def _head_late(self) -> None:
            # Nothing is answered: a client that is this slow, or silent, is not waiting for it.
            self.transport.abort()

    return GuardedProtocol


def _cancelled(timer: asyncio.TimerHandle | None) -> None:
    if timer is not None:
        timer.cancel()
