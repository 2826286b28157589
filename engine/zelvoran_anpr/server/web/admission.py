"""Lets a request in, as somebody who may do certain things, or says why not."""

from starlette.types import Scope

from ..config.named_tokens import MANAGE, READ
from ..peer.connection import Connection
from .access import (
    Refusal,
    Request,
    comes_from_here,
    cookie_of,
    foreign_page,
    token_of,
    wrong_host,
)
from .caller import EVERYTHING, Caller
from .cors import is_preflight, listed_origin
from .credentials import Grant
from .paths import OPEN_PATHS, PAGES, RECOGNITION
from .state import ServiceState

LOCAL = "local"
PREFLIGHT = "preflight"
_SIGN_IN = "Sign in, or send the API token; see: zv-anpr server token"
_SERVES_OTHERS = (
    "A program that others reach, or that is connected to other machines, must send the API token "
    "(it could be a proxy); see: zv-anpr server token"
)


class Admission:
    def __init__(self, state: ServiceState) -> None:
        self._state = state

    async def admit(self, scope: Scope, caller: Caller) -> Caller | Refusal:
        """Return the caller with name and scopes, or why there is no way in."""
        request = _request(scope)
        refusal = self._not_ours(request, scope)
        if refusal:
            return refusal
        path = scope["path"]
        if self._is_foreign_page(scope) and is_preflight(scope):
            return caller._replace(name=PREFLIGHT)
        if path in OPEN_PATHS or path.startswith("/static/"):
            return caller._replace(name="anyone")
        known = await self._known(request, scope, caller.address)
        if isinstance(known, Refusal):
            return known
        name, scopes = known
        refusal = _beyond(name, scopes, scope) or self._too_often(name, caller.address)
        return refusal or caller._replace(name=name, scopes=scopes)

    def _is_foreign_page(self, scope: Scope) -> bool:
        """A page of another origin that the configuration lets in."""
        return listed_origin(scope, self._state.settings.server.cors_origins) is not None

    def _not_ours(self, request: Request, scope: Scope) -> Refusal | None:
        server = self._state.settings.server
        bad_host = wrong_host(request, server.host, server.allowed_hosts)
        return bad_host or (None if self._is_foreign_page(scope) else foreign_page(request))

    async def _known(
        self, request: Request, scope: Scope, client: str
    ) -> tuple[str, frozenset[str]] | Refusal:
        token = token_of(request)
        if token is not None:
            return await self._by_token(token, request, scope, client)
        session = None if self._is_foreign_page(scope) else self._session(request)
        if session:
            return f"session:{session.name}", session.scopes
        if not comes_from_here(request) or self._state.settings.server.require_token:
            return Refusal(401, _SIGN_IN, "token")
        if not await _connection(scope).is_private():
            return Refusal(401, _SERVES_OTHERS, "token")
        return LOCAL, EVERYTHING

    async def _by_token(
        self, token: str, request: Request, scope: Scope, client: str
    ) -> tuple[str, frozenset[str]] | Refusal:
        failed = self._state.failed_sign_ins
        seconds = failed.wait(client)
        # A program of this user could read the token: it guesses nothing.
        if seconds and not await _is_own_program(request, scope):
            return too_many_failures(seconds)
        grant = self._state.credentials.by_token(token)
        if grant is not None:
            return f"token:{grant.name}", grant.scopes
        if not await _is_own_program(request, scope):
            failed.take(client)
        return Refusal(401, "The API token is wrong; see: zv-anpr server token", "token")

    def _session(self, request: Request) -> Grant | None:
        sessions = self._state.sessions
        cookies = request.headers.get(b"cookie", b"").decode("latin-1")
        return sessions.grant_of(cookie_of(cookies, sessions.cookie))

    def _too_often(self, name: str, client: str) -> Refusal | None:
        rate = self._state.requests_of_clients
        if rate is None or name == LOCAL:
            return None
        seconds = rate.wait(client)
        if seconds:
            return Refusal(429, "Too many requests came from this address", "rate", seconds)
        rate.take(client)
        return None


def too_many_failures(seconds: int) -> Refusal:
    return Refusal(429, "Too many wrong tokens came from this address", "throttled", seconds)


def _request(scope: Scope) -> Request:
    headers = dict(scope["headers"])
    opens_page = (
        scope["method"] in ("GET", "HEAD")
        and scope["path"] in PAGES
        and headers.get(b"sec-fetch-mode") == b"navigate"
    )
    client = scope.get("client")
    local = (scope.get("server") or ("",))[0]
    return Request(headers, client[0] if client else "", local, opens_page, client is None)


def _beyond(name: str, scopes: frozenset[str], scope: Scope) -> Refusal | None:
    reads = scope["method"] in ("GET", "HEAD", "OPTIONS") or scope["path"] in RECOGNITION
    needed = READ if reads else MANAGE
    if needed in scopes:
        return None
    return Refusal(403, f'{name} lacks the scope "{needed}"', "scope")


def _connection(scope: Scope) -> Connection:
    return scope["state"]["connection"]


async def _is_own_program(request: Request, scope: Scope) -> bool:
    return comes_from_here(request) and await _connection(scope).is_private()
