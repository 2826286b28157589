"""Upgrades the package, then restarts what runs; when either fails, all is as it was before."""

import contextlib
import shlex
import subprocess
import sys
from collections.abc import Sequence

from ..config.settings import Settings
from .options import StartOptions
from .port_lock import port_lock
from .records import Instance, running_instances
from .restart import planned, replace_all
from .saved_package import SavedPackage

_DISTRIBUTION = "zelvoran-anpr"


def upgrade(host: str | None, port: int | None, pip_args: str | None) -> None:
    """Install the newest package and restart every running server.

    `host` and `port` move the server when exactly one runs. Raises RuntimeError with one line;
    the servers then run on as they were.
    """
    found = running_instances()
    if len(found) > 1 and (host or port):
        raise RuntimeError("Several servers are running; --host and --port would move them all")
    changes = StartOptions(host, port)
    # A mistake is told before anything is installed.
    pairs = [(instance, planned(instance, changes)) for instance in found]
    with SavedPackage(_DISTRIBUTION) as saved:
        _install(pip_args)
        _replace(pairs, saved)
    if not found:
        print("No ANPR server was running; start one with: zv-anpr server start --daemon")


def _replace(pairs: Sequence[tuple[Instance, Settings]], saved: SavedPackage) -> None:
    with contextlib.ExitStack() as locks:
        for _, settings in pairs:
            locks.enter_context(port_lock(settings.server.port, settings.limits.start_seconds))
        try:
            replace_all(pairs)
        except RuntimeError as error:
            back = "the one before is installed again" if saved.restore() else (
                "the one before could not be put back, install it with pip"
            )  # fmt: skip
            raise RuntimeError(f"The new release does not start; {back}: {error}") from None


def _install(pip_args: str | None) -> None:
    try:
        extra = shlex.split(pip_args or "")
    except ValueError as error:
        raise RuntimeError(f"--pip-args cannot be understood: {error}") from None
    command = [sys.executable, "-m", "pip", "install", "--upgrade", f"{_DISTRIBUTION}[server]"]
    print(f"→ {shlex.join([*command[1:], *extra])}", flush=True)
    done = subprocess.run([*command, *extra], stdin=subprocess.DEVNULL, check=False)
    if done.returncode:
        raise RuntimeError(
            f"The upgrade failed (pip ended with status {done.returncode}); "
            "nothing was restarted and running servers go on"
        )
    print("✅ Package upgraded", flush=True)
