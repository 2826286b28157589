"""Judges the program at the other end of a connection where there is no /proc; see its twin."""

import os

import psutil

from ..config.addresses import ip_address, is_loopback


class Lookout:
    """Judges programs; what it saw is not kept."""

    def speaks_for_this_user(self, client: tuple[str, int], server: tuple[str, int]) -> bool:
        """Tell whether the TCP connection's other end is a program of ours that serves nobody."""
        wanted = _end(client), _end(server)
        own = psutil.Process().username()
        for process in psutil.process_iter(["username"]):
            if process.info["username"] != own:
                continue
            held = _connections(process)
            if held and any((_end(c.laddr), _end(c.raddr)) == wanted for c in held):
                return process.pid == os.getpid() or all(map(_is_harmless, held))
        return False

    def process_speaks_for_this_user(self, pid: int, uid: int) -> bool:
        """The same of a process that the kernel named as the other end of a Unix socket."""
        try:
            held = _connections(psutil.Process(pid))
        except psutil.Error:
            return False
        return held is not None and uid == os.geteuid() and all(map(_is_harmless, held))


def _connections(process: psutil.Process) -> list | None:
    try:
        return process.net_connections(kind="inet")
    except psutil.Error:
        return None


def _is_harmless(connection) -> bool:
    # Who is connected to a program that listens is not followed here: it may be anybody.
    if connection.status == psutil.CONN_LISTEN or not connection.laddr:
        return connection.status != psutil.CONN_LISTEN
    here = connection.laddr[0]
    there = connection.raddr[0] if connection.raddr else ""
    return is_loopback(here) or is_loopback(there) or here == there


def _end(address) -> tuple | None:
    return (ip_address(address[0]), address[1]) if address else None
