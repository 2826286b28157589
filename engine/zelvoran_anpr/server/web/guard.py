"""The first thing every request meets: its number, safe headers, counting, the log."""

import re
import secrets
import time
from collections.abc import Collection

from starlette.types import ASGIApp, Message, Receive, Scope, Send

from .caller import Caller
from .heads import head_problem, plain_head
from .methods import as_routed
from .paths import route_name
from .request_log import log_answer
from .state import ServiceState

_METHODS = frozenset({"GET", "HEAD", "POST", "PUT", "DELETE", "OPTIONS"})
_REQUEST_ID = re.compile(rb"[A-Za-z0-9._-]{1,64}")
_CONTENT_POLICY = (
    "default-src 'none'; script-src 'self'; style-src 'self' 'unsafe-inline'; "
    "img-src 'self' blob: data:; connect-src 'self'; form-action 'self'; base-uri 'none'; "
    "frame-ancestors 'none'"
)
_HEADERS = (
    (b"content-security-policy", _CONTENT_POLICY.encode()),
    (b"cross-origin-opener-policy", b"same-origin"),
    (b"cross-origin-resource-policy", b"same-origin"),
    (b"referrer-policy", b"no-referrer"),
    (b"x-content-type-options", b"nosniff"),
    (b"x-frame-options", b"DENY"),
)


class Guard:
    """ASGI middleware: sees every request come in and every answer go out."""

    def __init__(self, app: ASGIApp, state: ServiceState, known_paths: Collection[str]) -> None:
        self._app = app
        self._state = state
        self._known_paths = known_paths

    async def __call__(self, scope: Scope, receive: Receive, send: Send) -> None:
        if scope["type"] != "http":
            await self._app(scope, receive, send)
            return
        begun = time.monotonic()
        request_id = _request_id(scope)
        bad_head = head_problem(scope)  # of what was sent, before it is put right
        routed = as_routed(plain_head(scope))
        routed["state"] = {
            **scope.get("state", {}), "caller": Caller.unknown(request_id), "bad_head": bad_head,
        }  # fmt: skip
        extra = [*_HEADERS, *_kept_nowhere(routed), (b"x-request-id", request_id.encode())]
        status = 500
        received = 0

        async def watched_send(message: Message) -> None:
            nonlocal status
            if message["type"] == "http.response.start":
                status = message["status"]
                message["headers"] = [*message.get("headers", []), *extra]
            await send(message)

        async def watched_receive() -> Message:
            nonlocal received
            message = await receive()
            received += len(message.get("body", b""))
            return message

        try:
            await self._app(routed, watched_receive, watched_send)
        finally:
            self._note(routed, scope["method"], status, received, time.monotonic() - begun)

    def _note(self, routed: Scope, method: str, status: int, received: int, seconds: float) -> None:
        metrics = self._state.metrics
        known = method if method in _METHODS else "OTHER"
        metrics.count_answer(known, route_name(routed, self._known_paths), status, seconds)
        metrics.count_bytes_in(received)
        if status >= 400:
            metrics.count_refusal(routed["state"].get("refusal"), status)
        log_answer(routed, method, status, seconds)


def _request_id(scope: Scope) -> str:
    """Return the client's own number for its request, when it gave a plain one, else a new one."""
    given = dict(scope["headers"]).get(b"x-request-id", b"")
    return given.decode() if _REQUEST_ID.fullmatch(given) else secrets.token_hex(8)


def _kept_nowhere(scope: Scope) -> list[tuple[bytes, bytes]]:
    return [(b"cache-control", b"no-store")] if scope["path"].startswith("/api") else []
