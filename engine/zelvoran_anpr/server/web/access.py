"""What the head of a request alone tells: whom it names, where it comes from, what it shows.

A browser on this machine is not its user's will: any page it shows can send requests here, so a
browser is told by the headers that pages cannot forge (Host, Origin, Sec-Fetch-Site).
"""

import re
import socket
from typing import NamedTuple
from urllib.parse import urlsplit

from ..config.addresses import ip_address, is_loopback

_FORWARDING = (b"forwarded", b"x-forwarded-for", b"x-real-ip", b"via")
_OWN_SITE = ("same-origin", "none")
_HOST = re.compile(r"(?:[A-Za-z0-9._-]+|\[[0-9A-Fa-f:.]+\])(?::[0-9]{1,5})?")
"""No zone either: after the sign of percent anything could stand, and a browser sends none."""


class Refusal(NamedTuple):
    status: int
    text: str
    reason: str
    """One word for the counters."""
    retry_after: int | None = None


class Request(NamedTuple):
    """The parts of an ASGI scope that decisions rest on."""

    headers: dict[bytes, bytes]
    client: str
    local: str
    """The address of this machine that the client reached."""
    opens_page: bool
    """A navigation of a browser to one of our pages, which hold no data."""
    over_unix: bool = False


def wrong_host(request: Request, bound: str, allowed: list[str]) -> Refusal | None:
    """Refuse names that are not ours: a foreign name can be made to point here (DNS rebinding)."""
    name = _host_name(request.headers.get(b"host", b"").decode("latin-1"))
    if name and (is_loopback(name) or name == bound.lower() or name in map(str.lower, allowed)):
        return None
    if name and not is_loopback(bound) and (ip_address(name) or name in _machine_names()):
        return None
    text = "This server is not known by that Host name; see server.allowed_hosts"
    return Refusal(403, text, "host")


def foreign_page(request: Request) -> Refusal | None:
    """Refuse what a page of another origin sent."""
    if _is_foreign_origin(request):
        return Refusal(403, "Requests of pages from another origin are refused", "origin")
    site = _site(request)
    if site and site not in _OWN_SITE and not request.opens_page:
        return Refusal(403, "Requests of pages from another site are refused", "origin")
    return None


def comes_from_here(request: Request) -> bool:
    """Tell whether a program of this machine may be asking: no page, and nothing passed on."""
    if any(name in request.headers for name in _FORWARDING):
        return False
    from_page = b"origin" in request.headers or _site(request) not in (None, "none")
    # A connection from one's own address to itself never left the machine either.
    here = is_loopback(request.client) or request.client == request.local
    return (here or request.over_unix) and not from_page


def token_of(request: Request) -> str | None:
    """Return the token that the request shows."""
    own = request.headers.get(b"x-zv-anpr-token")
    if own is not None:
        return own.decode("latin-1").strip()
    scheme, _, value = request.headers.get(b"authorization", b"").decode("latin-1").partition(" ")
    return value.strip() if scheme.lower() == "bearer" else None


def cookie_of(header: str, name: str) -> str | None:
    """Return one cookie's value; the rest of the header is not looked at."""
    for part in header.split(";"):
        key, found, value = part.strip().partition("=")
        if found and key == name:
            return value
    return None


def _is_foreign_origin(request: Request) -> bool:
    origin = request.headers.get(b"origin")
    if origin is None:
        return False
    host = request.headers.get(b"host", b"").decode("latin-1").lower()
    try:
        return urlsplit(origin.decode("latin-1").lower()).netloc != host
    except ValueError:  # such as "http://["
        return True


def _site(request: Request) -> str | None:
    value = request.headers.get(b"sec-fetch-site")
    return value.decode("latin-1").lower() if value is not None else None


def _host_name(given: str) -> str:
    if not _HOST.fullmatch(given):
        return ""
    try:
        parts = urlsplit(f"//{given}")
        return (parts.hostname or "").rstrip(".") if (parts.port or 1) > 0 else ""
    except ValueError:
        return ""


def _machine_names() -> set[str]:
    name = socket.gethostname().lower()
    short = name.partition(".")[0]
    return {name, short, f"{short}.local"}
