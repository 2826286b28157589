"""Ends connections of clients that send their request, or take their answer, too slowly."""

import asyncio
import contextlib
from typing import Any

import h11
from uvicorn.protocols.http.h11_impl import H11Protocol

from ..peer.connection import Connection, Watch
from .crowd import Crowd
from .half_closed import Listener


def guarded_protocol(
    header_seconds: float, drain_seconds: float, crowd: Crowd
) -> type[asyncio.Protocol]:
    """Return a protocol that waits so long for a request's head, and for a full send buffer.

    A request's state holds `connection`, and `crowded`: whether that is one too many.
    """

    watch = Watch()

    class GuardedProtocol(H11Protocol):
        _head_timer: asyncio.TimerHandle | None = None
        _drain_timer: asyncio.TimerHandle | None = None
        _listener: Listener | None = None

        def connection_made(self, transport: asyncio.Transport) -> None:
            super().connection_made(transport)
            crowd.enter(self)
            self.app_state = _StateOfRequests(self, crowd, Connection(transport, watch))
            self._watch_head()

        def data_received(self, data: bytes) -> None:
            super().data_received(data)
            self._watch_head()

        def eof_received(self) -> bool:
            """Keep the way back open for an answer that is being made."""
            if not self._answering() or self.cycle.more_body:
                return False
            self._listener = self._listener or Listener(self.transport, self._ask)
            return True

        def on_response_complete(self) -> None:
            super().on_response_complete()
            if self._listener is not None and not self._answering():
                self.transport.close()

        def connection_lost(self, exc: Exception | None) -> None:
            crowd.leave(self)
            self._head_timer = _cancelled(self._head_timer)
            self._drain_timer = _cancelled(self._drain_timer)
            if self._listener is not None:
                self._listener.stop()
            super().connection_lost(exc)

        def give_way(self) -> None:
            self.transport.abort()

        def pause_writing(self) -> None:
            super().pause_writing()
            self._drain_timer = self.loop.call_later(drain_seconds, self.transport.abort)

        def resume_writing(self) -> None:
            self._drain_timer = _cancelled(self._drain_timer)
            super().resume_writing()

        def _answering(self) -> bool:
            return self.cycle is not None and not self.cycle.response_complete

        def _ask(self) -> bool:
            if self.cycle.response_started or self.scope["http_version"] == "1.0":
                return self.cycle.response_started  # the answer itself will tell
            with contextlib.suppress(h11.LocalProtocolError):
                word = h11.InformationalResponse(status_code=100, headers=[], reason=b"Continue")
                self.transport.write(self.conn.send(word))
            return True

        def _watch_head(self) -> None:
            if self._answering():
                self._head_timer = _cancelled(self._head_timer)
            elif self._head_timer is None:
                self._head_timer = self.loop.call_later(header_seconds, self._head_late)

        def _head_late(self) -> None:
            # Nothing is answered: a client that is this slow, or silent, is not waiting for it.
            self.transport.abort()

    return GuardedProtocol


class _StateOfRequests:
    """Stands in for the state that each request of a connection is given a copy of."""

    def __init__(self, protocol: Any, crowd: Crowd, connection: Connection) -> None:
        self._protocol = protocol
        self._crowd = crowd
        self._connection = connection

    def copy(self) -> dict[str, Any]:
        crowded = not self._crowd.is_seated(self._protocol)
        return {"crowded": crowded, "connection": self._connection}


def _cancelled(timer: asyncio.TimerHandle | None) -> None:
    if timer is not None:
        timer.cancel()
