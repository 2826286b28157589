"""Upgrades the package, then restarts what runs; a failed installation changes nothing."""

import shlex
import subprocess
import sys

from .options import StartOptions
from .records import running_instances
from .restart import planned, restart_instance

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
    for instance in found:  # a mistake is told before anything is installed
        planned(instance, changes)
    _install(pip_args)
    for instance in found:
        restart_instance(instance, changes)
    if not found:
        print("No ANPR server was running; start one with: zv-anpr server start --daemon")


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
