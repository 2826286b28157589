"""What pages of the origins in `server.cors_origins` are told; for all others there is nothing."""

from collections.abc import Sequence

from starlette.responses import Response
from starlette.types import ASGIApp, Scope

_METHODS = b"GET, HEAD, POST, PUT, DELETE"
_HEADERS = b"Authorization, Content-Type, X-Request-ID, X-ZV-ANPR-Token"
_EXPOSED = b"Retry-After, X-Request-ID"
_SECONDS = b"600"


def listed_origin(scope: Scope, allowed: Sequence[str]) -> bytes | None:
    """Return the origin of the page that asks, when it is one that may."""
    origin = dict(scope["headers"]).get(b"origin")
    known = [name.lower().rstrip("/") for name in allowed]
    return origin if origin and origin.decode("latin-1").lower() in known else None


def headers_for(origin: bytes) -> list[tuple[bytes, bytes]]:
    """Let a page read the answer. Its cookies do not count; browsers are not told they would."""
    return [
        (b"access-control-allow-origin", origin),
        (b"access-control-expose-headers", _EXPOSED),
        (b"vary", b"Origin"),
    ]


def is_preflight(scope: Scope) -> bool:
    """Tell whether a browser asks what it may send; such a question carries no credential."""
    return scope["method"] == "OPTIONS" and any(
        name == b"access-control-request-method" for name, _ in scope["headers"]
    )


def preflight_answer() -> ASGIApp:
    answer = Response(status_code=204)
    answer.raw_headers += [
        (b"access-control-allow-methods", _METHODS),
        (b"access-control-allow-headers", _HEADERS),
        (b"access-control-max-age", _SECONDS),
    ]
    return answer
