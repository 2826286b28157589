"""Starts, stops and finds servers, as the command line and other programs do it.

Light to import: each operation loads what it needs. Importing fails with an ImportError that
names what is missing when the packages of the `server` extra are not installed.
"""

import importlib.util
from collections.abc import Sequence
from typing import Any

__all__ = [
    "_print_server_table",
    "find_all_servers",
    "get_installed_version",
    "get_running_version",
    "get_status",
    "restart_server",
    "start_server",
    "stop_server",
    "upgrade_server",
]

_NEEDED = {
    "fastapi": "fastapi",
    "fastapi_offline": "fastapi-offline",
    "filelock": "filelock",
    "python_multipart": "python-multipart",
    "prometheus_client": "prometheus-client",
    "psutil": "psutil",
    "ruamel": "ruamel.yaml",
    "uvicorn": "uvicorn",
}


def _require_extra() -> None:
    missing = [name for module, name in _NEEDED.items() if not importlib.util.find_spec(module)]
    if missing:
        advice = "they come with pip install 'zelvoran-anpr[server]'"
        raise ImportError(f"missing {', '.join(missing)} ({advice})")


_require_extra()


def start_server(
    host: str | None = None,
    port: int | None = None,
    daemon: bool = False,
    threads: int | None = None,
    config_path: str | None = None,
) -> None:
    """Start a server; what is None comes from the configuration.

    In the foreground this returns when the server was told to stop. As a daemon it returns when
    the server is ready. Raises RuntimeError or ValueError with one line when it cannot start.
    """
    from .server.daemon.options import StartOptions
    from .server.daemon.start import start

    start(StartOptions(host, port, threads, config_path), detached=daemon)


def stop_server(
    force: bool = False,
    target_port: int | None = None,
    target_pid: int | None = None,
    stop_all: bool = False,
) -> None:
    """Stop the server that is meant and wait for its end; `force` kills it at once.

    Without a target that is the only one that runs. Raises RuntimeError with one line.
    """
    from .server.daemon.stop import stop

    stop(force, target_port, target_pid, stop_all)


def restart_server(
    host: str | None = None, port: int | None = None, threads: int | None = None
) -> None:
    """Restart in the background with what the server ran with, except for what is given."""
    from .server.daemon.restart import restart

    restart(host, port, threads)


def upgrade_server(
    host: str | None = None, port: int | None = None, pip_args: str | None = None
) -> None:
    """Upgrade the package with pip, then restart; a failed upgrade leaves the server running."""
    from .server.daemon.upgrade import upgrade

    upgrade(host, port, pip_args)


def get_status() -> dict[str, Any]:
    """Return a map with `running`, `pid` and `url`; the latter two are None when none runs."""
    from .server.daemon.inspection import status

    return status()


def get_installed_version() -> str:
    """Return the version of the installed package."""
    from .server.daemon.inspection import installed_version

    return installed_version()


def get_running_version() -> str | None:
    """Return the version that the running server reports, or None."""
    from .server.daemon.inspection import running_version

    return running_version()


def find_all_servers() -> Sequence[dict[str, Any]]:
    """Return a description of every running server of this user."""
    from .server.daemon.inspection import find_servers

    return find_servers()


def _print_server_table(servers: Sequence[dict[str, Any]]) -> None:
    from .server.daemon.inspection import print_table

    print_table(servers)
