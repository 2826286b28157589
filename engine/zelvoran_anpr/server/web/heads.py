"""What is looked at, and put right, in the head of every request before anything else reads it."""

import re
from collections.abc import Iterable
from urllib.parse import unquote

from starlette.types import Scope

from .access import Refusal

MOST_BYTES = 32 * 1024
"""Of all headers of a request together, names included."""

_MOST_COOKIES = 20
_OUR_COOKIE = re.compile(rb"zv_anpr_[A-Za-z0-9_]{1,40}=[A-Za-z0-9._~-]{1,300}")
_ABSOLUTE = re.compile(rb"https?://([^/?#]*)([^?]*)", re.IGNORECASE)
_CHARSET = re.compile(rb";\s*charset\s*=\s*(\"[^\"]*\"|[^;]*)", re.IGNORECASE)

Headers = Iterable[tuple[bytes, bytes]]


def head_problem(scope: Scope) -> Refusal | None:
    """Refuse a head that nothing good comes with."""
    headers = scope["headers"]
    if sum(len(name) + len(value) for name, value in headers) > MOST_BYTES:
        text = f"The headers may have at most {MOST_BYTES // 1024} KB together"
        return Refusal(431, text, "head")
    names = [name for name, _ in headers]
    if b"transfer-encoding" in names and b"content-length" in names:
        # Two servers in a row could see two different requests in it.
        text = "Send either Content-Length or Transfer-Encoding, not both"
        return Refusal(400, text, "head")
    return None


def plain_head(scope: Scope) -> Scope:
    """Return the scope with a path without a host, our own cookies only, and UTF-8 forms."""
    headers = [(name, value) for name, value in scope["headers"] if name != b"cookie"]
    cookies = [value for name, value in scope["headers"] if name == b"cookie"]
    if cookies:
        # Parsers of cookies take a time that grows with the square of what they are given.
        headers.append((b"cookie", b"; ".join(_own(b";".join(cookies)))))
    headers = [(name, _utf8_form(name, value)) for name, value in headers]
    return _origin_form({**scope, "headers": headers})


def _own(cookies: bytes) -> list[bytes]:
    pairs = (pair.strip() for pair in cookies[:MOST_BYTES].split(b";"))
    return [pair for pair in pairs if _OUR_COOKIE.fullmatch(pair)][:_MOST_COOKIES]


def _utf8_form(name: bytes, value: bytes) -> bytes:
    # A client's choice could be a codec that makes texts that no answer can carry.
    return _CHARSET.sub(b"", value) if name == b"content-type" else value


def _origin_form(scope: Scope) -> Scope:
    """Turn a target like "http://host/path", which every server must take, into "/path"."""
    found = _ABSOLUTE.fullmatch(scope.get("raw_path", b""))
    if not found:
        return scope
    host, raw = found.groups()
    headers = [(name, value) for name, value in scope["headers"] if name != b"host"]
    return {
        **scope, "raw_path": raw or b"/", "path": unquote((raw or b"/").decode("ascii")),
        "headers": [*headers, (b"host", host)],  # of the two it is the one that counts
    }  # fmt: skip
