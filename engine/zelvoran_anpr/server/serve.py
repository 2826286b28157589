"""What a server process does: takes its port, tells of itself, answers until told to stop."""

import argparse
import logging
import os
import signal
import sys
import threading
import time
from typing import Any

from .config.config_file import ConfigError
from .config.paths import log_path
from .config.settings import Settings
from .daemon.listeners import Listeners
from .daemon.options import StartOptions, require_token, resolve
from .daemon.ports import PortProblem
from .daemon.records import LOADING, PREPARED, READY, STARTING, OwnRecord, base_url
from .log_file import set_up_logging
from .log_lines import FORMATS

_PORT_SECONDS = 5

_log = logging.getLogger("zelvoran_anpr.server")


def serve(settings: Settings, detached: bool, start_id: str = "", replaces: bool = False) -> None:
    """Run a server in this process until SIGTERM, which returns, or Ctrl+C, which raises.

    One that `replaces` another loads first and takes the port when a line comes on standard input.
    Raises RuntimeError with one line when the port is taken or the models do not load.
    """
    from .._version import __version__

    server, limits = settings.server, settings.limits
    token = require_token(server.host)
    listeners = None if replaces else Listeners(server)
    lines = FORMATS[server.log_format]()
    set_up_logging(log_path(), int(limits.log_mb * 1e6), limits.log_files, not detached, lines)
    for line in settings.warnings:
        _log.warning("%s", line)
    record = OwnRecord(settings, __version__, detached, start_id)
    try:
        _run(settings, token, record, listeners, detached)
    finally:
        record.remove()
        if listeners is not None:
            listeners.close()


def _run(
    settings: Settings, token: str, record: OwnRecord, listeners: Listeners | None, detached: bool
) -> None:
    from .web.service import Service

    service = Service(settings, token, on_ready=lambda: record.write(READY))
    _take_hang_up(service, detached)
    if not detached:
        _announce(base_url(settings.server.host, settings.server.port))
        _stop_with_parent(service)
    if listeners is None:
        record.write(STARTING)
        service.run_prepared(lambda: _port_when_told(settings, record))
    else:
        record.write(LOADING)
        service.run(listeners.sockets)
    if service.failure:
        raise RuntimeError(service.failure)


def _port_when_told(settings: Settings, record: OwnRecord) -> Listeners:
    """Say that only the port is missing; return it when the one before has let go of it."""
    record.write(PREPARED)
    if not sys.stdin.readline():
        raise RuntimeError("the restart was given up")
    deadline = time.monotonic() + _PORT_SECONDS
    while True:
        try:
            return Listeners(settings.server)
        except PortProblem:
            if time.monotonic() > deadline:
                raise
        time.sleep(0.05)


def _announce(url: str) -> None:
    print(f"ANPR server on {url} (PID: {os.getpid()})")
    print(f"   Dashboard: {url}/")
    print("   Stop with Ctrl+C", flush=True)


def _take_hang_up(service: Any, detached: bool) -> None:
    """End with the terminal, but with a word and gracefully; in the background go on."""

    def hung_up(*_: object) -> None:
        _log.warning("SIGHUP: %s", "going on" if detached else "the terminal is gone: stopping")
        if not detached:
            service.stop()

    if hasattr(signal, "SIGHUP"):
        signal.signal(signal.SIGHUP, hung_up)


def _stop_with_parent(service: Any) -> None:
    """End the server when the program that runs it in the foreground is gone."""
    parent = os.getppid()

    def watch() -> None:
        while os.getppid() == parent:
            time.sleep(1)
        _log.warning("the program that started this server is gone: stopping")
        service.stop()

    threading.Thread(target=watch, daemon=True, name="parent watch").start()


def main(arguments: list[str] | None = None) -> int:
    """Run a server from a command line; the status is 1, with one line, when it cannot start."""
    parser = argparse.ArgumentParser(prog="zelvoran_anpr.server.serve")
    parser.add_argument("--host")
    parser.add_argument("--port", type=int)
    parser.add_argument("--threads", type=int)
    parser.add_argument("--config")
    parser.add_argument("--detached", action="store_true")
    parser.add_argument("--start-id", default="")
    parser.add_argument("--replaces", action="store_true")
    given = parser.parse_args(arguments)
    try:
        settings = resolve(StartOptions(given.host, given.port, given.threads, given.config))
        serve(settings, given.detached, given.start_id, given.replaces)
    except (ConfigError, RuntimeError, OSError) as error:
        print(f"Error: {error}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 128 + signal.SIGINT
    return 0


if __name__ == "__main__":
    sys.exit(main())
