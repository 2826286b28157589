"""What a server process does: takes its port, tells of itself, answers until told to stop."""

import argparse
import logging
import os
import signal
import sys
import threading
import time

from .config.config_file import ConfigError
from .config.paths import log_path
from .config.settings import Settings
from .daemon.options import StartOptions, require_token, resolve
from .daemon.ports import listen
from .daemon.records import base_url, write_own_record
from .log_file import set_up_logging

_log = logging.getLogger("zelvoran_anpr.server")


def serve(settings: Settings, detached: bool) -> None:
    """Run a server in this process until SIGTERM, which returns, or Ctrl+C, which raises.

    Raises RuntimeError with one line when the port is taken or the models do not load.
    """
    from .._version import __version__
    from .web.service import Service

    server = settings.server
    token = require_token(server.host)
    socket = listen(server.host, server.port)
    set_up_logging(
        log_path(), int(settings.limits.log_mb * 1e6), settings.limits.log_files, not detached
    )
    for line in settings.warnings:
        _log.warning("%s", line)
    record = write_own_record(
        server.host, server.port, server.threads, settings.source, __version__, detached
    )
    try:
        service = Service(settings, token)
        if not detached:
            _announce(base_url(server.host, server.port))
            _stop_with_parent(service)
        service.run(socket)
    finally:
        record.unlink(missing_ok=True)
        socket.close()
    if service.failure:
        raise RuntimeError(service.failure)


def _announce(url: str) -> None:
    print(f"ANPR server on {url} (PID: {os.getpid()})")
    print(f"   Dashboard: {url}/")
    print("   Stop with Ctrl+C", flush=True)


def _stop_with_parent(service) -> None:
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
    given = parser.parse_args(arguments)
    try:
        settings = resolve(StartOptions(given.host, given.port, given.threads, given.config))
        serve(settings, given.detached)
    except (ConfigError, RuntimeError, OSError) as error:
        print(f"Error: {error}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 128 + signal.SIGINT
    return 0


if __name__ == "__main__":
    sys.exit(main())
