"""Decides from addresses and headers alone whether a request may go on.

Programs on this machine need no token. A browser on this machine is not its user's will: any
page it shows can send requests here, so a browser is told by the headers that pages cannot
forge (Host, Origin, Sec-Fetch-Site) and must have signed in.
"""

import socket
from http.cookies import CookieError, SimpleCookie
from typing import NamedTuple
from urllib.parse import urlsplit

from ..config.addresses import ip_address, is_loopback
from .session import COOKIE, Sessions

_FORWARDING = (b"forwarded", b"x-forwarded-for", b"x-real-ip", b"via")
_OWN_SITE = ("same-origin", "none")


class Refusal(NamedTuple):
    status: int
    text: str


class Request(NamedTuple):
    """The parts of an ASGI scope that decisions rest on."""

    headers: dict[bytes, bytes]
    client: str
    local: str
    """The address of this machine that the client reached."""
    opens_page: bool
    """A navigation of a browser to one of our pages, which hold no data."""


def wrong_host(request: Request, bound: str, allowed: list[str]) -> Refusal | None:
    """Refuse names that are not ours: a foreign name can be made to point here (DNS rebinding)."""
    given = request.headers.get(b"host", b"").decode("latin-1")
    name = (urlsplit(f"//{given}").hostname or "") if _is_plain(given) else ""
    name = name.rstrip(".").lower()
    if name and (is_loopback(name) or name == bound.lower() or name in map(str.lower, allowed)):
        return None
    if name and not is_loopback(bound) and (ip_address(name) or name in _machine_names()):
        return None
    return Refusal(403, "This server is not known by that Host name; see server.allowed_hosts")


def foreign_page(request: Request) -> Refusal | None:
    """Refuse what a page of another origin sent."""
    origin = request.headers.get(b"origin")
    host = request.headers.get(b"host", b"").decode("latin-1").lower()
    if origin is not None and urlsplit(origin.decode("latin-1").lower()).netloc != host:
        return Refusal(403, "Requests of pages from another origin are refused")
    site = _site(request)
    if site and site not in _OWN_SITE and not request.opens_page:
        return Refusal(403, "Requests of pages from another site are refused")
    return None


def not_allowed(request: Request, sessions: Sessions, local_too: bool) -> Refusal | None:
    """Refuse a caller who must show a credential and does not; `local_too`: whoever it is."""
    token = _token(request)
    if token is not None:
        if sessions.is_token(token):
            return None
        return Refusal(401, "The API token is wrong; after a rotation restart the server")
    if has_session(request.headers.get(b"cookie", b"").decode("latin-1"), sessions):
        return None
    if is_local_program(request) and not local_too:
        return None
    return Refusal(401, "Sign in, or send the API token; see: zv-anpr server token")


def has_session(cookies: str, sessions: Sessions) -> bool:
    """Tell whether a Cookie header holds a sign-in that is still good."""
    jar: SimpleCookie = SimpleCookie()
    try:
        jar.load(cookies)
    except CookieError:
        return False
    return COOKIE in jar and sessions.is_cookie(jar[COOKIE].value)


def is_local_program(request: Request) -> bool:
    """Tell whether the caller is a program on this machine: no page in a browser, no proxy."""
    if any(name in request.headers for name in _FORWARDING):
        return False
    from_page = b"origin" in request.headers or _site(request) not in (None, "none")
    # A connection from one's own address to itself never left the machine either.
    here = is_loopback(request.client) or request.client == request.local
    return here and not from_page


def _token(request: Request) -> str | None:
    own = request.headers.get(b"x-zv-anpr-token")
    if own is not None:
        return own.decode("latin-1").strip()
    scheme, _, value = request.headers.get(b"authorization", b"").decode("latin-1").partition(" ")
    return value.strip() if scheme.lower() == "bearer" else None


def _site(request: Request) -> str | None:
    value = request.headers.get(b"sec-fetch-site")
    return value.decode("latin-1").lower() if value is not None else None


def _is_plain(host: str) -> bool:
    try:
        parts = urlsplit(f"//{host}")
        return parts.netloc == host and "@" not in host and (parts.port or 1) > 0
    except ValueError:
        return False


def _machine_names() -> set[str]:
    name = socket.gethostname().lower()
    short = name.partition(".")[0]
    return {name, short, f"{short}.local"}
