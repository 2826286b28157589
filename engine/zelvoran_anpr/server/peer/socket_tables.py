"""The sockets of this machine as Linux lists them under /proc; addresses become plain objects."""

import ipaddress
import sys
from pathlib import Path
from typing import NamedTuple

Address = ipaddress.IPv4Address | ipaddress.IPv6Address
End = tuple[Address, int]

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


class Tables:
    """One look at the sockets that a process can see; `process` is an entry of /proc."""

    def __init__(self, process: str = "self") -> None:
        net = Path("/proc", process, "net")
        connections = [*_internet(net / "tcp"), *_internet(net / "tcp6")]
        self.tcp = {socket.inode: socket for socket in connections}
        self.by_ends = {(socket.local, socket.remote): socket for socket in connections}
        self.listening = {socket.local[1] for socket in connections if socket.listening}
        self.datagrams = {
            socket.inode: socket
            for name in ("udp", "udp6", "udplite", "udplite6", "raw", "raw6")
            for socket in _internet(net / name)
        }
        self.unix_servers = _unix_servers(net / "unix")


def end(host: str, port: int) -> End | None:
    """Return one end of a connection in the form that the tables have, or None for a name."""
    try:
        address = ipaddress.ip_address(host.partition("%")[0])
    except ValueError:
        return None
    return _plain(address), port


def _internet(file: Path) -> list[Socket]:
    try:
        lines = file.read_text("ascii").splitlines()[1:]
    except OSError:  # a kernel without this protocol
        return []
    return [_socket(line.split()) for line in lines]


def _socket(fields: list[str]) -> Socket:
    return Socket(
        _end(fields[1]), _end(fields[2]), fields[3] == _LISTENING, int(fields[7]), int(fields[9])
    )


def _end(text: str) -> End:
    host, _, port = text.partition(":")
    # The kernel prints the address as 32-bit numbers in the byte order of the machine.
    words = [bytes.fromhex(host[place : place + 8]) for place in range(0, len(host), 8)]
    if sys.byteorder == "little":
        words = [word[::-1] for word in words]
    return _plain(ipaddress.ip_address(b"".join(words))), int(port, 16)


def _plain(address: Address) -> Address:
    return getattr(address, "ipv4_mapped", None) or address


def _unix_servers(file: Path) -> set[int]:
    """Return the stream sockets that listen, or were accepted: only those carry a name."""
    try:
        lines = file.read_text("utf-8", "replace").splitlines()[1:]
    except OSError:
        return set()
    servers = set()
    for fields in map(str.split, lines):
        accepts = int(fields[3], 16) & _UNIX_ACCEPTS
        named_stream = len(fields) > 7 and fields[4] != _UNIX_DATAGRAM
        if accepts or named_stream:
            servers.add(int(fields[6]))
    return servers
