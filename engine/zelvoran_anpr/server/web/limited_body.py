"""A request body that ends early when it is too large, comes too slowly or has no room."""

import asyncio
import time
from typing import Any

from starlette.types import Message, Receive

from .answers import problem
from .upload_total import UploadTotal


class Stop(Exception):
    """No more of the body is taken; `answer` is what the client is told."""

    def __init__(self, status: int, text: str, **headers: str) -> None:
        self.answer = problem(status, text, connection="close", **headers)


class LimitedBody:
    """Stands in for the `receive` of a request; `limit` is in bytes."""

    def __init__(self, receive: Receive, limit: int, limits: Any, total: UploadTotal) -> None:
        self.limit = limit
        self.stop: Stop | None = None
        """Why no more of the body is taken; what the application makes of that does not count."""
        self.taken = 0
        self.last_at = time.monotonic()
        self.complete = False
        self._receive = receive
        self._left = limit
        self._total = total
        self._next_stop: Stop | None = None
        self._pending: asyncio.Future[Message] | None = None
        self._timer = asyncio.get_running_loop().call_later(limits.body_seconds, self._late)
        total.enter(self)

    def close(self) -> None:
        """Free what it holds; to be called when its request is over."""
        self._timer.cancel()
        self._total.leave(self)

    async def receive(self) -> Message:
        if self.complete:  # what comes now is the end of the connection, whenever that is
            return await self._receive()
        message = await self._next()
        if message["type"] == "http.request":
            size = len(message.get("body", b""))
            self._left -= size
            self.complete = not message.get("more_body", False)
            if self.complete:
                self._timer.cancel()
            self.last_at = time.monotonic()
            if self._left < 0:
                raise self._stopped(too_large(self.limit))
            if not self._total.take(self, size):
                raise self._stopped(no_room())
        return message

    def give_way(self) -> None:
        """Stop: the room is needed for a client that sends."""
        self._cut_off(no_room())

    def _late(self) -> None:
        self._cut_off(Stop(408, "The request was sent too slowly"))

    def _cut_off(self, stop: Stop) -> None:
        self._next_stop = stop  # does not count for a request that never asks for its body
        if self._pending is not None:
            self._pending.cancel()

    async def _next(self) -> Message:
        if self._next_stop:
            raise self._stopped(self._next_stop)
        self._pending = asyncio.ensure_future(self._receive())
        try:
            return await self._pending
        except asyncio.CancelledError:
            if self._next_stop:
                raise self._stopped(self._next_stop) from None
            raise
        finally:
            self._pending = None

    def _stopped(self, stop: Stop) -> Stop:
        self.stop = stop
        return stop


def too_large(limit: int) -> Stop:
    return Stop(413, f"The request may have at most {limit / 1e6:g} MB")


def no_room() -> Stop:
    return Stop(429, "The server holds as many uploads as it may", **{"retry-after": "1"})
