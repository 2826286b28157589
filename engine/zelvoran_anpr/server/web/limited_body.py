"""A request body that ends early when it is too large or comes too slowly."""

import asyncio
import time
from typing import Any

from starlette.types import Message, Receive

from .answers import problem


class Stop(Exception):
    """No more of the body is taken; `answer` is what the client is told."""

    def __init__(self, status: int, text: str, **headers: str) -> None:
        self.answer = problem(status, text, connection="close", **headers)


class LimitedBody:
    """Stands in for the `receive` of a request; `limit` is in bytes."""

    def __init__(self, receive: Receive, limit: int, limits: Any) -> None:
        self.limit = limit
        self.stop: Stop | None = None
        """Why no more of the body is taken; what the application makes of that does not count."""
        self._receive = receive
        self._left = limit
        self._deadline = time.monotonic() + limits.body_seconds
        self._complete = False

    async def receive(self) -> Message:
        if self._complete:  # what comes now is the end of the connection, whenever that is
            return await self._receive()
        try:
            seconds = max(self._deadline - time.monotonic(), 0)
            message = await asyncio.wait_for(self._receive(), seconds)
        except asyncio.TimeoutError:
            raise self._stopped(Stop(408, "The request was sent too slowly")) from None
        if message["type"] == "http.request":
            self._left -= len(message.get("body", b""))
            self._complete = not message.get("more_body", False)
            if self._left < 0:
                raise self._stopped(too_large(self.limit))
        return message

    def _stopped(self, stop: Stop) -> Stop:
        self.stop = stop
        return stop


def too_large(limit: int) -> Stop:
    return Stop(413, f"The request may have at most {limit / 1e6:g} MB")
