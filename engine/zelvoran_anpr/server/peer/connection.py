"""One connection to the server, and whether its other end is a program of this user alone."""

import asyncio
import socket
import struct
import sys
from typing import NamedTuple

if sys.platform == "linux":
    from .linux_program import Lookout
else:
    from .other_program import Lookout

_CREDENTIALS = struct.Struct("3i")
_LOOKED_AT_AT_ONCE = 2


class UnixPeer(NamedTuple):
    pid: int
    uid: int


class Connection:
    """Made when a client connects; what is found out is kept until it leaves."""

    def __init__(self, transport: asyncio.BaseTransport, watch: "Watch") -> None:
        self._transport = transport
        self._watch = watch
        self._private: asyncio.Future[bool] | None = None

    async def is_private(self) -> bool:
        """Tell whether the other end is a program of this user that serves nobody else.

        It may then do what its user may. Whoever cannot be looked at is a stranger.
        """
        if self._private is None:
            self._private = asyncio.ensure_future(self._look())
        return await asyncio.shield(self._private)

    async def _look(self) -> bool:
        async with self._watch.turns:
            return await asyncio.to_thread(_judge, self._watch.lookout, self._transport)


class Watch:
    """What the connections of one server share; a flood of them must not take all of its time."""

    def __init__(self) -> None:
        self.lookout = Lookout()
        self.turns = asyncio.Semaphore(_LOOKED_AT_AT_ONCE)


def _judge(lookout: Lookout, transport: asyncio.BaseTransport) -> bool:
    ours: socket.socket | None = transport.get_extra_info("socket")
    if ours is not None and ours.family not in (socket.AF_INET, socket.AF_INET6):
        peer = unix_peer(ours)
        return peer is not None and lookout.process_speaks_for_this_user(*peer)
    ends = transport.get_extra_info("peername"), transport.get_extra_info("sockname")
    if not all(ends):
        return False
    return lookout.speaks_for_this_user(*((host, port) for host, port, *_ in ends))


def unix_peer(ours) -> UnixPeer | None:
    """Return who the kernel says connected to a Unix socket, where it says so."""
    if not hasattr(socket, "SO_PEERCRED"):
        return None
    data = ours.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, _CREDENTIALS.size)
    pid, uid, _ = _CREDENTIALS.unpack(data)
    return UnixPeer(pid, uid)
