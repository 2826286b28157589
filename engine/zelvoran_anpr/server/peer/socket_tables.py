"""The sockets of this machine as Linux lists them under /proc; only what is asked for is parsed."""

import ipaddress
import sys
from collections.abc import Iterable, Iterator
from pathlib import Path
from typing import NamedTuple

Address = ipaddress.IPv4Address | ipaddress.IPv6Address
End = tuple[Address, int]

_NET = Path("/proc/self/net")
_STREAMS = ("tcp", "tcp6")
_DATAGRAMS = ("udp", "udp6", "udplite", "udplite6", "raw", "raw6")
_LISTENING = "0A"
_UNIX_ACCEPTS = 0x10000
_UNIX_DATAGRAM = "0002"


class Socket(NamedTuple):
    """One line of a table of Internet sockets."""

    local: End
    remote: End
    listening: bool
    uid: int
    inode: int

    @property
    def stays_here(self) -> bool:
        """Nothing that is sent or received here can have come from another machine."""
        here, there = self.local[0], self.remote[0]
        to_itself = here == there and not here.is_unspecified
        return here.is_loopback or there.is_loopback or to_itself


class Streams:
    """One look at all TCP sockets of this network."""

    def __init__(self) -> None:
        self._lines = [fields for name in _STREAMS for fields in _lines(name)]

    def between(self, local: End, remote: End) -> Socket | None:
        """Return one side of a connection."""
        ports = _port(local), _port(remote)
        for fields in self._lines:
            if (fields[1][-4:], fields[2][-4:]) == ports:
                found = _socket(fields)
                if (found.local, found.remote) == (local, remote):
                    return found
        return None

    def held(self, inodes: Iterable[int]) -> list[Socket]:
        return _held(self._lines, inodes)

    def is_listened_on(self, port: int) -> bool:
        wanted = f"{port:04X}"
        return any(f[3] == _LISTENING and f[1][-4:] == wanted for f in self._lines)


def datagram_sockets(inodes: Iterable[int]) -> list[Socket]:
    return [s for name in _DATAGRAMS for s in _held(list(_lines(name)), inodes)]


def unix_servers(inodes: Iterable[int]) -> list[int]:
    """Return the stream sockets that listen, or were accepted: only those carry a name."""
    wanted = {str(inode) for inode in inodes}
    return [int(f[6]) for f in _lines("unix") if f[6] in wanted and _serves(f)]


def end(host: str, port: int) -> End | None:
    """Return one end of a connection in the form that the tables have, or None for a name."""
    try:
        address = ipaddress.ip_address(host.partition("%")[0])
    except ValueError:
        return None
    return _plain(address), port


def _serves(fields: list[str]) -> bool:
    named_stream = len(fields) > 7 and fields[4] != _UNIX_DATAGRAM
    return named_stream or bool(int(fields[3], 16) & _UNIX_ACCEPTS)


def _lines(name: str) -> Iterator[list[str]]:
    try:
        text = (_NET / name).read_text("utf-8", "replace")
    except OSError:  # a kernel without this protocol
        return
    for line in text.splitlines()[1:]:
        yield line.split()


def _held(lines: Iterable[list[str]], inodes: Iterable[int]) -> list[Socket]:
    wanted = {str(inode) for inode in inodes}
    return [_socket(fields) for fields in lines if fields[9] in wanted]


def _socket(fields: list[str]) -> Socket:
    return Socket(
        _end(fields[1]), _end(fields[2]), fields[3] == _LISTENING, int(fields[7]), int(fields[9])
    )


def _port(place: End) -> str:
    return f"{place[1]:04X}"


def _end(text: str) -> End:
    host, _, port = text.partition(":")
    # The kernel prints the address as 32-bit numbers in the byte order of the machine.
    words = [bytes.fromhex(host[place : place + 8]) for place in range(0, len(host), 8)]
    if sys.byteorder == "little":
        words = [word[::-1] for word in words]
    return _plain(ipaddress.ip_address(b"".join(words))), int(port, 16)


def _plain(address: Address) -> Address:
    return getattr(address, "ipv4_mapped", None) or address
