"""Judges the program at the other end of a connection by the sockets it holds, on Linux.

A reverse proxy on this machine comes from 127.0.0.1, often as the same user, and need not say for
whom it speaks. What it cannot do without is a way by which others reach it: a socket that listens
for them or that leads to them. A program without one speaks for this user alone.
"""

import os

from .socket_tables import Socket, Tables, end

_TUNNEL = "/dev/net/tun"


def speaks_for_this_user(client: tuple[str, int], server: tuple[str, int]) -> bool:
    """Tell whether the TCP connection's other end is a program of ours that serves nobody."""
    ends = end(*client), end(*server)
    if ends[0] is None or ends[1] is None:
        return False
    tables = Tables()
    socket = tables.by_ends.get((ends[0], ends[1]))
    if socket is None or socket.uid != os.geteuid():
        return False
    holder = _holder(socket.inode)
    return holder is not None and _serves_nobody(tables, holder)


def process_speaks_for_this_user(pid: int, uid: int) -> bool:
    """The same of a process that the kernel named as the other end of a Unix socket."""
    return uid == os.geteuid() and _serves_nobody(Tables(), pid)


def _serves_nobody(tables: Tables, pid: int) -> bool:
    held = _held(pid)
    if held is None or _network(pid) != _network(os.getpid()):
        return False
    inodes, tunnels = held
    return _is_ours(pid) or (not tunnels and all(_is_harmless(tables, i) for i in inodes))


def _is_harmless(tables: Tables, inode: int) -> bool:
    if inode in tables.unix_servers:
        return False
    datagrams = tables.datagrams.get(inode)
    if datagrams is not None and not datagrams.stays_here:
        return False
    socket = tables.tcp.get(inode)
    if socket is None:
        return True
    if socket.listening or not socket.stays_here:
        return socket.local[0].is_loopback
    return socket.local[1] not in tables.listening or _serves_us(tables, socket)


def _serves_us(tables: Tables, accepted: Socket) -> bool:
    """Tell whether this server itself, or nobody any more, is whom a program answers."""
    caller = tables.by_ends.get((accepted.remote, accepted.local))
    if caller is None or not caller.inode:
        return True
    holder = _holder(caller.inode)
    return holder is not None and _is_ours(holder)


def _is_ours(pid: int) -> bool:
    """This server and the processes that it started pass nothing on."""
    return os.getpid() in (pid, _parent(pid))


def _parent(pid: int) -> int | None:
    try:
        with open(f"/proc/{pid}/stat", "rb") as stat:
            return int(stat.read().rpartition(b")")[2].split()[1])
    except OSError:
        return None


def _holder(inode: int) -> int | None:
    """Return a process of this user that holds a socket; the newest are the likeliest."""
    for pid in sorted(map(int, filter(str.isdigit, os.listdir("/proc"))), reverse=True):
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
            target = os.readlink(f"{folder}/{name}")
            if target.startswith("socket:["):
                inodes.add(int(target[8:-1]))
            tunnels = tunnels or target == _TUNNEL
    except OSError:
        return None
    return inodes, tunnels
