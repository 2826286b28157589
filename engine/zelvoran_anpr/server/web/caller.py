"""Who asks, and what that one may do."""

from typing import NamedTuple

from starlette.requests import Request

from ..config.named_tokens import MANAGE, READ

EVERYTHING = frozenset({READ, MANAGE})
NOTHING: frozenset[str] = frozenset()


class Caller(NamedTuple):
    """`scope["state"]["caller"]` of every request."""

    name: str
    """For the log, such as "token:camera" or "local"."""
    scopes: frozenset[str]
    address: str
    request_id: str

    @classmethod
    def unknown(cls, request_id: str) -> "Caller":
        return cls("-", NOTHING, "-", request_id)


def caller_of(request: Request) -> Caller:
    return request.scope["state"]["caller"]
