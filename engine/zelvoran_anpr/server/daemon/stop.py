"""Stops servers: waits for the requests under way, or kills at once when told to."""

import signal
import sys
import time
from collections.abc import Sequence

from .identity import process_mark
from .inspection import find_servers, print_table
from .records import Instance, all_instances, running_instances
from .signals import kill_tree, send_signal

_POLL_SECONDS = 0.05
_GRACE_SECONDS = 15
"""Beyond the time that a server gives its requests; then it must have ended."""


def stop(force: bool, port: int | None, pid: int | None, everything: bool) -> None:
    """Stop the servers that are meant; raises RuntimeError with one line when one goes on."""
    found = all_instances()
    if not found and port is None and pid is None:
        print("No ANPR server is running.")
        return
    problems = _problems(_targets(found, port, pid, everything), force)
    while everything and not problems and (found := all_instances()):
        problems = _problems(found, force)  # those that were started meanwhile
    if problems:
        raise RuntimeError("; ".join(problems))


def _problems(targets: Sequence[Instance], force: bool) -> list[str]:
    return [problem for target in targets if (problem := _stop_one(target, force))]


def stop_instance(target: Instance, force: bool = False) -> None:
    """Stop one server and return when it has ended. Raises RuntimeError."""
    problem = _stop_one(target, force)
    if problem:
        raise RuntimeError(problem)


def _targets(
    found: Sequence[Instance], port: int | None, pid: int | None, everything: bool
) -> Sequence[Instance]:
    if everything:
        return found
    if port is None and pid is None:
        return [_the_one(found)]
    chosen = [i for i in found if port in (None, i.port) and pid in (None, i.pid)]
    if not chosen:
        named = f"with PID {pid}" if pid is not None else f"on port {port}"
        raise RuntimeError(f"No ANPR server {named} is running; see: zv-anpr server list")
    return chosen


def _the_one(found: Sequence[Instance]) -> Instance:
    if len(found) == 1:
        return found[0]
    print_table(find_servers())
    print()
    raise RuntimeError("Several servers are running; name one with --port or --pid, or use --all")


def _stop_one(target: Instance, force: bool) -> str | None:
    """Return None when the server has ended, else one line on why it has not."""
    try:
        if force or sys.platform == "win32":  # where no signal asks a process to end
            kill_tree(target.pid, target.mark)
        else:
            send_signal(target.pid, target.mark, signal.SIGTERM)
    except PermissionError:
        return f"The server with PID {target.pid} belongs to another user"
    seconds = _patience(target)
    if not _wait_gone(target, seconds):
        print(f"   It did not end within {seconds:g} s and is killed", flush=True)
        kill_tree(target.pid, target.mark)
        if not _wait_gone(target, _GRACE_SECONDS):
            return f"The server with PID {target.pid} does not stop"
    running_instances()  # clears the record of a killed server
    print(f"✅ ANPR server on port {target.port} stopped (PID: {target.pid})", flush=True)
    return None


def _wait_gone(target: Instance, seconds: float) -> bool:
    deadline = time.monotonic() + seconds
    while process_mark(target.pid) == target.mark:
        if time.monotonic() > deadline:
            return False
        time.sleep(_POLL_SECONDS)
    return True


def _patience(target: Instance) -> float:
    from ..config.config_file import ConfigError
    from ..config.options import Limits
    from ..config.settings import load_settings

    try:
        limits = load_settings(target.config_path, {}).limits
        seconds = limits.stop_seconds + limits.drain_seconds
    except ConfigError:
        seconds = Limits().stop_seconds
    return seconds + _GRACE_SECONDS
