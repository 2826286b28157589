"""Restarts a server with what it ran with; the new one is ready before the old one is stopped."""

from collections.abc import Sequence

from ..config.settings import Settings
from .inspection import preferred
from .launch import Launch
from .options import StartOptions, require_token, resolve
from .port_lock import port_lock
from .ports import check_address, check_free
from .records import Instance, running_instances
from .start import announce, start, started
from .stop import stop_instance


def restart(host: str | None, port: int | None, threads: int | None) -> None:
    """Restart the running server in the background; start one when none runs.

    The server is the one on `port` when there is one, else the one that runs, which then moves
    to `port`. What is None stays as it was. Raises RuntimeError or ConfigError with one line.
    """
    found = running_instances()
    if not found:
        print("No ANPR server is running; starting one.")
        start(StartOptions(host, port, threads), detached=True)
        return
    restart_instance(_chosen(found, port), StartOptions(host, port, threads))


def restart_instance(instance: Instance, changes: StartOptions) -> None:
    """Start a server's successor, and stop it when that is ready for its port.

    Raises RuntimeError, ConfigError; the one before goes on then, unless it is the port that fails.
    """
    settings = planned(instance, changes)
    with port_lock(settings.server.port, settings.limits.start_seconds):
        replace_all([(instance, settings)])


def replace_all(pairs: Sequence[tuple[Instance, Settings]]) -> None:
    """Prepare the successors of all, then let them take over one after the other.

    Raises RuntimeError; when one cannot be prepared all before go on as they were.
    """
    launches: list[Launch] = []
    try:
        for _, settings in pairs:
            announce(settings)
            launches.append(Launch(settings, replaces=True))
            launches[-1].wait_prepared()
        for (instance, settings), launch in zip(pairs, list(launches), strict=True):
            stop_instance(instance)
            launches.remove(launch)
            started(settings, launch.take_over())
    except BaseException:
        for launch in launches:
            launch.kill()
        raise


def planned(instance: Instance, changes: StartOptions) -> Settings:
    """Return what a server would be started again with.

    Raises RuntimeError or ConfigError with one line when it could not be.
    """
    options = StartOptions(
        changes.host or instance.host,
        instance.port if changes.port is None else changes.port,
        instance.threads if changes.threads is None else changes.threads,
        instance.config_path,
    )
    settings = resolve(options)
    require_token(settings.server.host)
    if settings.server.port != instance.port:
        check_free(settings.server.host, settings.server.port)
    else:  # the port itself is the running server's
        check_address(settings.server.host)
    return settings


def _chosen(found: Sequence[Instance], port: int | None) -> Instance:
    on_port = [instance for instance in found if instance.port == port]
    if on_port:
        return on_port[0]
    if len(found) == 1:
        return found[0]
    if port is None:
        return preferred(found)
    raise RuntimeError(
        f"No ANPR server on port {port} and several others; see: zv-anpr server list"
    )
