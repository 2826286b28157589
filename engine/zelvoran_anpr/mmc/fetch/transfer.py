"""One HTTP transfer that continues a partial file; what arrived before a failure stays in it."""

import http.client
import re
from collections.abc import Callable
from dataclasses import dataclass
from pathlib import Path
from typing import BinaryIO

from ..errors import MmcError
from .disk import disk_errors
from .http import StatusError, TransientError, host_of, open_url, reason_of

_BLOCK = 1 << 18
_CONTENT_RANGE = re.compile(r"bytes (\d+)-\d+/(\d+|\*)")


@dataclass(frozen=True)
class Remote:
    """What is fetched. `size` in bytes; `sha256` in hex, or None where nobody publishes one."""

    url: str
    name: str
    size: int
    sha256: str | None


def append(remote: Remote, part: Path, have: int, tell: Callable[[int], object]) -> None:
    """Ask for the bytes after the first `have`; `tell` learns how many are on disk."""
    headers = {"Range": f"bytes={have}-"} if have else {}
    try:
        answer = open_url(remote.url, headers)
    except StatusError as error:
        if error.status != 416:
            raise
        part.unlink(missing_ok=True)
        raise TransientError(str(error)) from None
    with answer, part.open("ab", buffering=0) as out:
        have = _agreed_start(answer, remote, have)
        out.truncate(have)
        while block := _read(answer, remote):
            have += len(block)
            if have > remote.size:
                out.truncate(0)
                raise MmcError(f"{host_of(remote.url)} sends more than {remote.name} should hold")
            _write(out, block, remote.name)
            tell(have)
    if have < remote.size:
        raise TransientError(f"{host_of(remote.url)} closed the connection early")


def _agreed_start(answer: http.client.HTTPResponse, remote: Remote, have: int) -> int:
    """The offset of the first byte of `answer`; a server may ignore ranges and begin at 0."""
    total: str | None = answer.headers.get("Content-Length")
    start = 0
    if answer.status == 206:
        match = _CONTENT_RANGE.match(answer.headers.get("Content-Range", ""))
        if not match or int(match[1]) != have:
            raise MmcError(f"{host_of(remote.url)} answered with another part than asked for")
        start, total = have, match[2]
    if total and total.isdigit() and int(total) != remote.size:
        raise MmcError(
            f"{host_of(remote.url)} offers {remote.name} with {total} bytes,"
            f" expected {remote.size}; try another mirror"
        )
    return start


def _read(answer: http.client.HTTPResponse, remote: Remote) -> bytes:
    try:
        return answer.read1(_BLOCK)
    except (OSError, http.client.HTTPException) as error:
        raise TransientError(f"{host_of(remote.url)} broke off: {reason_of(error)}") from None


def _write(out: BinaryIO, block: bytes, name: str) -> None:
    with disk_errors(f"writing {name}"):
        view = memoryview(block)
        while view:
            view = view[out.write(view) :]
