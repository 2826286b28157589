"""What runs, in which version, and the table that shows it."""

import json
import sys
import time
from collections.abc import Sequence
from typing import Any

from .records import Instance, running_instances

_PROBE_SECONDS = 5
_COLUMNS = ("PID", "URL", "THREADS", "VERSION", "UPTIME", "CONFIG")


def find_servers() -> list[dict[str, Any]]:
    """Return a description of every running server, by port; see `Instance` for the keys."""
    return [_describe(instance) for instance in running_instances()]


def status() -> dict[str, Any]:
    """Return {"running": False} or the description of the server that a user means.

    Among several that is the one on the configured port, else the one on the lowest port. Its
    `warnings`, which standard error tells as well, are about its configuration as it is now.
    """
    found = running_instances()
    if not found:
        return {"running": False, "pid": None, "url": None}
    chosen = preferred(found)
    warnings = _warnings(chosen.config_path)
    for line in warnings:
        print(f"Warning: {line}", file=sys.stderr)
    return {"running": True, **_describe(chosen), "warnings": warnings}


def _warnings(path: str | None) -> list[str]:
    from ..config.config_file import ConfigError
    from ..config.settings import load_settings

    try:
        return [*load_settings(path, {}).warnings]
    except ConfigError as error:
        return [str(error)]


def preferred(found: Sequence[Instance]) -> Instance:
    """Return the server on the configured port, else the first."""
    from ..config.config_file import ConfigError, load_config

    try:
        port = load_config().get("server", {}).get("port", 8000)
    except ConfigError:
        port = 8000
    return next((instance for instance in found if instance.port == port), found[0])


def running_version() -> str | None:
    """Return the version that the running server reports, or None when none answers."""
    from urllib.request import ProxyHandler, build_opener

    url = status()["url"]
    if url is None:
        return None
    try:
        direct = build_opener(ProxyHandler({}))
        with direct.open(f"{url}/api/health", timeout=_PROBE_SECONDS) as answer:
            return json.load(answer).get("version")
    except (OSError, ValueError, AttributeError):
        return None


def installed_version() -> str:
    """Return the version of the installed package, as its installer recorded it."""
    from importlib import metadata

    try:
        return metadata.version("zelvoran-anpr")
    except metadata.PackageNotFoundError:  # run from a source tree
        from ..._version import __version__

        return __version__


def print_table(servers: Sequence[dict[str, Any]]) -> None:
    """Print the descriptions from `find_servers`, one line each."""
    rows = [_COLUMNS, *(_row(server) for server in servers)]
    widths = [max(len(row[column]) for row in rows) for column in range(len(_COLUMNS))]
    print()
    for row in rows:
        cells = (cell.ljust(width) for cell, width in zip(row, widths, strict=True))
        print("  ".join(cells).rstrip())


def _row(server: dict[str, Any]) -> tuple[str, ...]:
    keys = ("pid", "url", "threads", "version")
    config = server.get("config_path") or "default"
    return (*(str(server[key]) for key in keys), _uptime(server["started"]), config)


def _uptime(started: float) -> str:
    minutes, seconds = divmod(max(int(time.time() - started), 0), 60)
    hours, minutes = divmod(minutes, 60)
    days, hours = divmod(hours, 24)
    if days:
        return f"{days}d {hours}h"
    return f"{hours}h {minutes}m" if hours else f"{minutes}m {seconds}s"


def _describe(instance: Instance) -> dict[str, Any]:
    return {**instance._asdict(), "url": instance.url}
