"""Signals a process only when it is the one that was meant."""

import os
import signal

from .identity import process_mark


def send_signal(pid: int, mark: str, number: int) -> bool:
    """Signal the process that has this id and mark; return False when it no longer runs.

    Raises PermissionError when it belongs to somebody else.
    """
    if not hasattr(os, "pidfd_open"):
        return _send_checked(pid, mark, number)
    # Once the descriptor is open the id cannot pass to another process behind our back.
    try:
        descriptor = os.pidfd_open(pid)
    except OSError:
        return _send_checked(pid, mark, number)
    try:
        if process_mark(pid) != mark:
            return False
        signal.pidfd_send_signal(descriptor, number)
        return True
    except ProcessLookupError:
        return False
    finally:
        os.close(descriptor)


def kill_tree(pid: int, mark: str) -> None:
    """Kill the process and all it started, at once. Raises PermissionError."""
    import psutil

    if process_mark(pid) != mark:
        return
    try:
        process = psutil.Process(pid)
        family = [*process.children(recursive=True), process]
    except psutil.NoSuchProcess:
        return
    for member in reversed(family):
        try:
            member.kill()
        except psutil.NoSuchProcess:
            continue
        except psutil.AccessDenied as error:
            raise PermissionError(str(error)) from None


def _send_checked(pid: int, mark: str, number: int) -> bool:
    if process_mark(pid) != mark:
        return False
    try:
        os.kill(pid, number)
    except ProcessLookupError:
        return False
    return True
