"""Starts a server: here in the foreground, or detached and returning when it is ready."""

import sys

from ..config.settings import Settings
from .launch import Launch
from .options import StartOptions, require_token, resolve
from .port_lock import port_lock
from .ports import check_free
from .records import base_url


def start(options: StartOptions, detached: bool) -> None:
    """Start a server; raises RuntimeError or ConfigError with one line when it cannot."""
    settings = resolve(options)
    require_token(settings.server.host)
    if detached:
        with port_lock(settings.server.port, settings.limits.start_seconds):
            check_free(settings.server.host, settings.server.port)
            start_detached(settings)
    else:
        from ..serve import serve

        check_free(settings.server.host, settings.server.port)
        serve(settings, detached=False)


def start_detached(settings: Settings) -> None:
    """Start a server process of its own and return once it says that it is ready."""
    announce(settings)
    started(settings, Launch(settings).wait_ready())


def announce(settings: Settings) -> None:
    """Tell what is about to be started."""
    for line in settings.warnings:
        print(f"Warning: {line}", file=sys.stderr)
    print(f"Starting ANPR server on {_url(settings)} ...", flush=True)


def started(settings: Settings, pid: int) -> None:
    """Tell that a server is ready."""
    print(f"✅ ANPR server started (PID: {pid})")
    print(f"   Dashboard: {_url(settings)}/", flush=True)


def _url(settings: Settings) -> str:
    return base_url(settings.server.host, settings.server.port)
