"""The second thing every request meets: it is let in, as somebody, or sent away."""

from starlette.types import ASGIApp, Message, Receive, Scope, Send

from . import cors
from .access import Refusal
from .admission import LOCAL, PREFLIGHT, Admission
from .answers import problem
from .caller import Caller
from .paths import PROBES, RECOGNITION
from .state import ServiceState


class Gate:
    """ASGI middleware: lets a request through to the application, or answers it itself."""

    def __init__(self, app: ASGIApp, state: ServiceState) -> None:
        self._app = app
        self._state = state
        self._admission = Admission(state)

    async def __call__(self, scope: Scope, receive: Receive, send: Send) -> None:
        if scope["type"] != "http":
            await self._app(scope, receive, send)
            return
        origin = self._state.proxies.origin(scope)
        scope["scheme"] = origin.scheme
        known = scope["state"]["caller"]._replace(address=origin.client)
        scope["state"]["caller"] = known
        answer = self._with_cors(scope, send)
        early = scope["state"]["bad_head"] or _one_too_many(scope)
        admitted = early or await self._admission.admit(scope, known)
        if isinstance(admitted, Refusal):
            await _refuse(scope, receive, answer, admitted)
        else:
            scope["state"]["caller"] = admitted
            await self._serve(scope, receive, answer, admitted)

    async def _serve(self, scope: Scope, receive: Receive, send: Send, caller: Caller) -> None:
        if caller.name == PREFLIGHT:
            await cors.preflight_answer()(scope, receive, send)
        elif scope["path"] in RECOGNITION and caller.name != LOCAL:
            await self._serve_some(scope, receive, send, caller)
        else:
            await self._app(scope, receive, send)

    async def _serve_some(self, scope: Scope, receive: Receive, send: Send, caller: Caller) -> None:
        underway = self._state.photos_of_clients
        if not underway.begin(caller.address):
            text = "Too many photos of this address are being read"
            await _refuse(scope, receive, send, Refusal(429, text, "client", 1))
            return
        try:
            await self._app(scope, receive, send)
        finally:
            underway.end(caller.address)

    def _with_cors(self, scope: Scope, send: Send) -> Send:
        origin = cors.listed_origin(scope, self._state.settings.server.cors_origins)
        if origin is None:
            return send

        async def readable(message: Message) -> None:
            if message["type"] == "http.response.start":
                message["headers"] = [*message.get("headers", []), *cors.headers_for(origin)]
            await send(message)

        return readable


def _one_too_many(scope: Scope) -> Refusal | None:
    if not scope["state"].get("crowded") or scope["path"] in PROBES:
        return None
    return Refusal(503, "Too many clients are connected; see limits.connections", "connections", 1)


async def _refuse(scope: Scope, receive: Receive, send: Send, refusal: Refusal) -> None:
    scope["state"]["refusal"] = refusal.reason
    # The body is not read: the connection cannot be used again.
    headers = {"connection": "close"}
    if refusal.status == 401:
        headers["www-authenticate"] = 'Bearer realm="ANPR server"'
    if refusal.retry_after is not None:
        headers["retry-after"] = str(refusal.retry_after)
    await problem(refusal.status, refusal.text, **headers)(scope, receive, send)
