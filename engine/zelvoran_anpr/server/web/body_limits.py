"""Ends requests whose body is too large, too slow or not wanted now."""

import asyncio
import contextlib

from starlette.formparsers import MultiPartParser
from starlette.responses import JSONResponse
from starlette.types import ASGIApp, Message, Receive, Scope, Send

from ..workers.errors import PoolFull
from .limited_body import LimitedBody, Stop, too_large
from .paths import RECOGNITION
from .state import ServiceState
from .upload_total import UploadTotal

_JSON_BYTES = 64 * 1024
_DRAIN_BYTES = 64 * 1024 * 1024
_DRAIN_SECONDS = 5


class BodyLimits:
    """ASGI middleware; answers 413, 408 and 429 with a connection that closes."""

    def __init__(self, app: ASGIApp, state: ServiceState) -> None:
        self._app = app
        self._state = state
        self._total = UploadTotal(int(state.settings.limits.uploads_mb * 1e6))
        # Photos stay in memory, where they are counted; no disk can be filled with them.
        MultiPartParser.spool_max_size = int(state.settings.limits.body_mb * 1e6)

    async def __call__(self, scope: Scope, receive: Receive, send: Send) -> None:
        if scope["type"] != "http":
            await self._app(scope, receive, send)
            return
        body = LimitedBody(receive, self._limit(scope), self._state.settings.limits, self._total)
        answering = False

        async def watched_send(message: Message) -> None:
            nonlocal answering
            if body.stop and not answering:
                return  # the application's own words on a body that we cut off
            answering = True
            await send(message)

        try:
            body.stop = self._check_head(scope, body.limit)
            if not body.stop:
                await self._app(scope, body.receive, watched_send)
        except Stop:
            pass  # kept by the body
        finally:
            body.close()
        if body.stop and not answering:
            await _answer_and_drain(body.stop.answer, receive, send)

    def _limit(self, scope: Scope) -> int:
        if scope["path"] in RECOGNITION:
            return int(self._state.settings.limits.body_mb * 1e6)
        return _JSON_BYTES

    def _check_head(self, scope: Scope, limit: int) -> Stop | None:
        length = dict(scope["headers"]).get(b"content-length", b"0")
        if int(length) > limit:
            return too_large(limit)
        if scope["path"] in RECOGNITION and scope["method"] == "POST":
            try:  # before the photo is sent: it costs nobody anything then
                seconds = self._state.settings.limits.request_seconds
                self._state.readers.check_room(seconds)
            except PoolFull as full:
                return Stop(429, str(full), **{"retry-after": str(full.retry_after)})
        return None


async def _answer_and_drain(answer: JSONResponse, receive: Receive, send: Send) -> None:
    """Send all of the answer, take in what the client still sends for a while, then end.

    Closing at once would reset the connection, and the client would never see the answer.
    """
    await send({"type": "http.response.start", "status": answer.status_code,
                "headers": answer.raw_headers})  # fmt: skip
    await send({"type": "http.response.body", "body": answer.body, "more_body": True})
    with contextlib.suppress(asyncio.TimeoutError):
        await asyncio.wait_for(_drain(receive), _DRAIN_SECONDS)
    await send({"type": "http.response.body", "body": b"", "more_body": False})


async def _drain(receive: Receive) -> None:
    left = _DRAIN_BYTES
    while left > 0:
        message = await receive()
        left -= len(message.get("body", b""))
        if message["type"] != "http.request" or not message.get("more_body", False):
            return
