"""The first thing every request meets: access rules, counting, logging, safe headers."""

import logging
import time
from typing import Any

from starlette.types import ASGIApp, Message, Receive, Scope, Send

from .access import Refusal, Request, foreign_page, not_allowed, wrong_host
from .answers import problem
from .heads import head_problem, plain_head
from .log_text import shown
from .methods import as_routed
from .paths import OPEN_PATHS, PAGES, PROBES, route_name
from .state import ServiceState

_log = logging.getLogger("zelvoran_anpr.access")
_METHODS = frozenset({"GET", "HEAD", "POST", "PUT", "DELETE", "OPTIONS"})
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
    """ASGI middleware: lets a request through to the application, or answers it itself."""

    def __init__(self, app: ASGIApp, state: ServiceState) -> None:
        self._app = app
        self._state = state

    async def __call__(self, scope: Scope, receive: Receive, send: Send) -> None:
        if scope["type"] != "http":
            await self._app(scope, receive, send)
            return
        begun = time.monotonic()
        status = 500

        async def watched_send(message: Message) -> None:
            nonlocal status
            if message["type"] == "http.response.start":
                status = message["status"]
                message["headers"] = _with_headers(scope, message.get("headers", []))
            await send(message)

        refusal = head_problem(scope)
        scope = plain_head(scope)
        refusal = refusal or _one_too_many(scope) or self._refusal(scope)
        routed = as_routed(scope)
        app = _refuse(refusal) if refusal else self._app
        try:
            await app(routed, receive, watched_send)
        finally:
            self._note(scope, route_name(routed), status, time.monotonic() - begun)

    def _refusal(self, scope: Scope) -> Refusal | None:
        server = self._state.settings.server
        path = scope["path"]
        request = _request(scope)
        refusal = wrong_host(request, server.host, server.allowed_hosts) or foreign_page(request)
        if refusal or path in OPEN_PATHS or path.startswith("/static/"):
            return refusal
        return not_allowed(request, self._state.sessions, server.require_token)

    def _note(self, scope: Scope, route: str, status: int, seconds: float) -> None:
        self._state.metrics.count_answer(
            scope["method"] if scope["method"] in _METHODS else "OTHER",
            route,
            status,
            seconds,
        )
        if scope["path"] in PROBES:  # asked for every few seconds: they would hide the rest
            return
        client = (scope.get("client") or ("-",))[0]
        path = shown(scope.get("raw_path", b"").decode("ascii", "backslashreplace"))
        method = shown(scope["method"])
        _log.info('%s "%s %s" %d %.1f ms', client, method, path, status, seconds * 1000)


def _request(scope: Scope) -> Request:
    headers = dict(scope["headers"])
    opens_page = (
        scope["method"] in ("GET", "HEAD")
        and scope["path"] in PAGES
        and headers.get(b"sec-fetch-mode") == b"navigate"
    )
    client = (scope.get("client") or ("",))[0]
    return Request(headers, client, (scope.get("server") or ("",))[0], opens_page)


def _one_too_many(scope: Scope) -> Refusal | None:
    if scope.get("state", {}).get("crowded") and scope["path"] not in PROBES:
        return Refusal(503, "Too many clients are connected; see limits.connections")
    return None


def _refuse(refusal: Refusal) -> ASGIApp:
    # The body is not read: the connection cannot be used again.
    headers = {"connection": "close"}
    if refusal.status == 503:
        headers["retry-after"] = "1"
    if refusal.status == 401:
        headers["www-authenticate"] = 'Bearer realm="ANPR server"'
    return problem(refusal.status, refusal.text, **headers)


def _with_headers(scope: Scope, headers: Any) -> list[tuple[bytes, bytes]]:
    stored = [(b"cache-control", b"no-store")] if scope["path"].startswith("/api") else []
    return [*headers, *_HEADERS, *stored]
