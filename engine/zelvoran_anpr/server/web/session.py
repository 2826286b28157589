"""Who a caller is: the API token in a header, or the cookie that a sign-in with it gave."""

import hmac
import secrets
import time

COOKIE = "zv_anpr_session"
LIFETIME_SECONDS = 30 * 24 * 3600


class Sessions:
    """Checks credentials against one token.

    A cookie is a signed date: it needs no store, survives a restart and ends with the token.
    """

    def __init__(self, token: str) -> None:
        self._token = token.encode()
        self._key = hmac.digest(self._token, b"dashboard session", "sha256")

    def is_token(self, given: str) -> bool:
        return hmac.compare_digest(given.encode("utf-8", "replace"), self._token)

    def new_cookie(self) -> str:
        """Return the value of a cookie that is good for LIFETIME_SECONDS."""
        body = f"{int(time.time())}.{secrets.token_urlsafe(12)}"
        return f"{body}.{self._signature(body)}"

    def is_cookie(self, value: str | None) -> bool:
        body, _, signature = (value or "").rpartition(".")
        if not hmac.compare_digest(signature.encode(), self._signature(body).encode()):
            return False
        issued = int(body.partition(".")[0])
        return 0 <= time.time() - issued <= LIFETIME_SECONDS

    def _signature(self, body: str) -> str:
        return hmac.digest(self._key, body.encode(), "sha256").hex()
