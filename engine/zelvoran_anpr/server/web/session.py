"""The cookie that a sign-in with a token gives to a browser."""

import hmac
import secrets
import time
from collections.abc import Sequence

from .credentials import Credentials, Grant
from .ended_sessions import EndedSessions

LIFETIME_SECONDS = 30 * 24 * 3600


class Sessions:
    """Makes and checks cookies.

    A cookie is a signed date: it survives a restart, and ends with its token, with a sign-out, or
    after its time. Browsers send cookies to every port of a host, so that name and signature are
    those of one server.
    """

    def __init__(self, credentials: Credentials, port: int, ended: EndedSessions) -> None:
        self.cookie = f"zv_anpr_session_{port}"
        """The name of this server's cookie."""
        self._credentials = credentials
        self._purpose = f"dashboard session on port {port}".encode()
        self._ended = ended

    def new_cookie(self, grant: Grant) -> str:
        """Return the value of a cookie that is good for LIFETIME_SECONDS."""
        body = f"{int(time.time())}.{secrets.token_urlsafe(12)}.{grant.name}"
        return f"{body}.{self._signature(grant, body)}"

    def grant_of(self, value: str | None) -> Grant | None:
        """Return what a cookie's holder may do, or None when the cookie is not good."""
        body, _, signature = (value or "").rpartition(".")
        parts = body.split(".")
        grant = self._signer(parts, body, signature)
        if grant is None or parts[1] in self._ended:
            return None
        return grant if 0 <= time.time() - int(parts[0]) <= LIFETIME_SECONDS else None

    def end(self, value: str | None) -> Grant | None:
        """Let a cookie count no more, wherever it was copied to; return whose it was. Blocks."""
        grant = self.grant_of(value)
        if grant is not None:
            issued, name, *_ = (value or "").split(".")
            self._ended.add(name, int(issued) + LIFETIME_SECONDS)
        return grant

    def _signer(self, parts: Sequence[str], body: str, signature: str) -> Grant | None:
        named = [g for g in self._credentials.grants() if len(parts) == 3 and g.name == parts[2]]
        for grant in named:
            if hmac.compare_digest(signature.encode(), self._signature(grant, body).encode()):
                return grant
        return None

    def _signature(self, grant: Grant, body: str) -> str:
        key = hmac.digest(grant.sha256.encode(), self._purpose, "sha256")
        return hmac.digest(key, body.encode(), "sha256").hex()
