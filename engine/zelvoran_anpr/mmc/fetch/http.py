"""HTTP GET with the standard library: one opener, and failures told apart by whether to retry."""

import http.client
import json
import ssl
import urllib.error
import urllib.request
from typing import Any
from urllib.parse import urlsplit

from ..errors import MmcError

# Seconds without a byte before a connection counts as dead.
STALL_SECONDS = 30.0
_RETRYABLE_STATUS = {408, 425, 429, 500, 502, 503, 504}
_USER_AGENT = "zelvoran-anpr"


class TransientError(MmcError):
    """The transfer failed in a way that asking again may cure."""


class StatusError(MmcError):
    """The server answered with a status that asking again will not change."""

    def __init__(self, text: str, status: int) -> None:
        super().__init__(text)
        self.status = status


class _NoDowngrade(urllib.request.HTTPRedirectHandler):
    """Follows redirects, but never from https to an unencrypted address."""

    def redirect_request(self, req, fp, code, msg, headers, newurl):  # type: ignore[no-untyped-def]
        if req.full_url.startswith("https:") and not newurl.startswith("https:"):
            raise MmcError(f"{host_of(req.full_url)} redirects to an insecure address; refused")
        return super().redirect_request(req, fp, code, msg, headers, newurl)


def host_of(url: str) -> str:
    return urlsplit(url).netloc.rpartition("@")[2] or url


def tls_context() -> ssl.SSLContext:
    """System certificates plus pip's bundle: some Python builds come without any."""
    context = ssl.create_default_context()
    try:
        from pip._vendor import certifi

        context.load_verify_locations(certifi.where())
    except (ImportError, OSError):
        pass
    return context


def open_url(
    url: str, headers: dict[str, str] | None = None, timeout: float | None = None
) -> http.client.HTTPResponse:
    """GET `url`, following redirects; raises TransientError, StatusError or MmcError."""
    if not url.lower().startswith(("https://", "http://")):
        raise MmcError(f"not a usable address: {url}")
    opener = urllib.request.build_opener(
        _NoDowngrade, urllib.request.HTTPSHandler(context=tls_context())
    )
    try:
        every = {"User-Agent": _USER_AGENT, **(headers or {})}
        request = urllib.request.Request(url, headers=every)
        return opener.open(request, timeout=STALL_SECONDS if timeout is None else timeout)
    except urllib.error.HTTPError as error:
        raise _status_error(url, error) from None
    except (OSError, http.client.HTTPException) as error:
        raise TransientError(f"cannot reach {host_of(url)}: {reason_of(error)}") from None
    except ValueError as error:
        raise MmcError(f"not a usable address: {url} ({error})") from None


def reason_of(error: BaseException) -> str:
    """The cause in a few words, whatever library layer it came from."""
    inner = getattr(error, "reason", None)
    if isinstance(inner, BaseException):
        return reason_of(inner)
    if isinstance(error, TimeoutError):
        return "it stopped answering"
    if isinstance(error, OSError) and error.strerror:
        return error.strerror
    return str(inner or error).strip().split("\n")[0] or type(error).__name__


def _status_error(url: str, error: urllib.error.HTTPError) -> MmcError:
    headers = error.headers
    if error.code in (403, 429) and headers.get("X-RateLimit-Remaining") == "0":
        text = f"{host_of(url)} allows no more anonymous requests now; try again in an hour"
        return StatusError(text, error.code)
    text = f"{host_of(url)} answered {error.code} {error.reason} for {urlsplit(url).path}"
    error.close()
    if error.code in _RETRYABLE_STATUS:
        return TransientError(text)
    return StatusError(text, error.code)


def read_json(url: str) -> Any:
    """GET a JSON document; raises MmcError when it is not one."""
    try:
        with open_url(url, {"Accept": "application/json"}) as answer:
            return json.loads(answer.read())
    except ValueError:
        raise MmcError(f"{host_of(url)} sent no JSON; is the address right?") from None
    except (OSError, http.client.HTTPException) as error:
        raise TransientError(f"{host_of(url)} broke off: {reason_of(error)}") from None
