"""Judges the program at the other end of a connection by the sockets it holds, on Linux.

A reverse proxy on this machine comes from 127.0.0.1, often as the same user, and need not say for
whom it speaks. What it cannot do without is a way by which others reach it: a socket that listens
for them or that leads to them. A program without one speaks for this user alone.
"""

import os
import time
from collections import deque

from .socket_lookup import owner_of
from .socket_tables import Socket, Streams, datagram_sockets, end, unix_servers

_TUNNEL = "/dev/net/tun"
_REMEMBERED = 8
_REMEMBERED_SECONDS = 2


class Lookout:
    """Judges programs, and remembers for a moment which it found to serve nobody."""

    def __init__(self) -> None:
        self._recent: deque[int] = deque(maxlen=_REMEMBERED)
        self._good: dict[int, tuple[bytes, float]] = {}

    def speaks_for_this_user(self, client: tuple[str, int], server: tuple[str, int]) -> bool:
        """Tell whether the TCP connection's other end is a program of ours that serves nobody."""
        there, here = end(*client), end(*server)
        if there is None or here is None:
            return False
        owner = owner_of(there, here)
        if owner is None or owner.uid != os.geteuid():
            return False
        holder = _holder(owner.inode, list(self._recent))
        if holder is None:
            return False
        if holder not in self._recent:
            self._recent.appendleft(holder)
        return self._judged(holder)

    def process_speaks_for_this_user(self, pid: int, uid: int) -> bool:
        """The same of a process that the kernel named as the other end of a Unix socket."""
        return uid == os.geteuid() and self._judged(pid)

    def _judged(self, pid: int) -> bool:
        mark, now = _started(pid), time.monotonic()
        known_mark, until = self._good.get(pid, (None, 0.0))
        if mark is not None and mark == known_mark and now < until:
            return True
        good = _serves_nobody(Streams(), pid)
        self._good = {p: known for p, known in self._good.items() if known[1] > now}
        if good and mark:
            self._good[pid] = (mark, now + _REMEMBERED_SECONDS)
        return good


def _serves_nobody(streams: Streams, pid: int) -> bool:
    held = _held(pid)
    if held is None or _network(pid) != _network(os.getpid()):
        return False
    inodes, tunnels = held
    if _is_ours(pid):
        return True
    return not (
        tunnels
        or any(not socket.stays_here for socket in datagram_sockets(inodes))
        or unix_servers(inodes)
        or any(not _is_harmless(streams, socket) for socket in streams.held(inodes))
    )


def _is_harmless(streams: Streams, socket: Socket) -> bool:
    if socket.listening or not socket.stays_here:
        return socket.local[0].is_loopback
    return not streams.is_listened_on(socket.local[1]) or _serves_us(streams, socket)


def _serves_us(streams: Streams, accepted: Socket) -> bool:
    """Tell whether this server itself, or nobody any more, is whom a program answers."""
    caller = streams.between(accepted.remote, accepted.local)
    if caller is None or not caller.inode:
        return True
    holder = _holder(caller.inode, [])
    return holder is not None and _is_ours(holder)


def _is_ours(pid: int) -> bool:
    """This server and the processes that it started pass nothing on."""
    return os.getpid() in (pid, _parent(pid))


def _parent(pid: int) -> int | None:
    fields = _stat(pid)
    return int(fields[1]) if fields else None


def _started(pid: int) -> bytes | None:
    """Return when a process began, which tells it from a later one with the same id."""
    fields = _stat(pid)
    return fields[19] if fields else None


def _stat(pid: int) -> list[bytes] | None:
    """Return what is known of a process, from its state on."""
    try:
        with open(f"/proc/{pid}/stat", "rb") as stat:
            return stat.read().rpartition(b")")[2].split()
    except OSError:
        return None


def _holder(inode: int, likely: list[int]) -> int | None:
    """Return a process of this user that holds a socket; the newest are likelier than others."""
    others = sorted(map(int, filter(str.isdigit, os.listdir("/proc"))), reverse=True)
    for pid in [*likely, *others]:
        held = _held(pid)
        if held and inode in held[0]:
            return pid
    return None


def _network(pid: int) -> str | None:
    try:
        return os.readlink(f"/proc/{pid}/ns/net")
    except OSError:
        return None


def _held(pid: int) -> tuple[set[int], bool] | None:
    """Return the sockets of a process and whether it has a tunnel; None when it cannot be seen."""
    folder = f"/proc/{pid}/fd"
    inodes, tunnels = set(), False
    try:
        if os.stat(folder).st_uid != os.geteuid():
            return None
        for name in os.listdir(folder):
            target = _open_file(f"{folder}/{name}")
            if target.startswith("socket:["):
                inodes.add(int(target[8:-1]))
            tunnels = tunnels or target == _TUNNEL
    except OSError:
        return None
    return inodes, tunnels


def _open_file(link: str) -> str:
    """Return what a descriptor stands for; nothing when it was closed since it was listed."""
    try:
        return os.readlink(link)
    except FileNotFoundError:
        return ""
