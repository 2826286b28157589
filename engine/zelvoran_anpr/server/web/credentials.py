"""The tokens that count now; their files are looked at again whenever they change."""

import hmac
import logging
from collections.abc import Callable
from pathlib import Path
from typing import Any, NamedTuple

from ..config.named_tokens import (
    DEFAULT,
    MANAGE,
    READ,
    TokenProblem,
    hash_of,
    named_tokens,
    tokens_path,
)
from ..config.token_file import local_api_token, token_path

_log = logging.getLogger("zelvoran_anpr.audit")
_EVERYTHING = frozenset({READ, MANAGE})


class Grant(NamedTuple):
    """What the holder of a token may do."""

    name: str
    scopes: frozenset[str]
    sha256: str


class Credentials:
    """The token that the server was started with, the one in its file now, and the named ones."""

    def __init__(self, start_token: str) -> None:
        self._first = Grant(DEFAULT, _EVERYTHING, hash_of(start_token))
        self._current = _Watched(token_path, _current_token)
        self._named = _Watched(tokens_path, _named_grants)

    def grants(self) -> list[Grant]:
        """The first stays good until the server ends, also when a new token has been written."""
        return [self._first, *self._current.value(), *self._named.value()]

    def by_token(self, given: str) -> Grant | None:
        """Return what a token gives, or None when it is not one of ours."""
        wanted = hash_of(given)
        matching = [g for g in self.grants() if hmac.compare_digest(g.sha256, wanted)]
        return matching[0] if matching else None


class _Watched:
    """What a file gives, read anew when the file is another one or has changed."""

    def __init__(self, path: Callable[[], Path], read: Callable[[], list[Grant]]) -> None:
        self._path = path
        self._read = read
        self._stamp: Any = None
        self._grants: list[Grant] = []

    def value(self) -> list[Grant]:
        stamp = self._look()
        if stamp != self._stamp:
            self._stamp = stamp
            self._replace()
        return self._grants

    def _look(self) -> Any:
        try:
            found = self._path().stat()
        except OSError as error:
            return error.errno
        return found.st_mtime_ns, found.st_size, found.st_ino

    def _replace(self) -> None:
        before = {grant.name for grant in self._grants}
        try:
            self._grants = self._read()
        except (OSError, ValueError) as error:  # what cannot be understood lets nobody in
            _log.error("no token of this file counts now: %s", error)
            self._grants = []
        for name in sorted(before - {grant.name for grant in self._grants}):
            _log.info('token "%s" does not count any more', name)


def _current_token() -> list[Grant]:
    token = local_api_token()
    return [Grant(DEFAULT, _EVERYTHING, hash_of(token))] if token else []


def _named_grants() -> list[Grant]:
    try:
        return [Grant(t.name, frozenset(t.scopes), t.sha256) for t in named_tokens()]
    except TokenProblem as problem:
        raise ValueError(str(problem)) from None
