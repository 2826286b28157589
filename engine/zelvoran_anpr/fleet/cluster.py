"""Dask: processes on this machine, or a scheduler that somebody started."""

import logging
import signal
from collections.abc import Iterator
from contextlib import contextmanager
from multiprocessing import resource_tracker

import dask
import distributed

from .._version import __version__
from .errors import FleetError, one_line
from .worker import wrong_version

_CONNECT_SECONDS = 5
_WAIT_SECONDS = 60
# Dask looks at itself so often that it takes 7 % of a core; photos take a tenth of a second each.
_LOCAL = {
    "distributed.worker.profile.enabled": False,
    "distributed.admin.tick.interval": "1s",
    "distributed.admin.system-monitor.interval": "10s",
    "distributed.worker.memory.monitor-interval": "1s",
}


def dashboard(client: distributed.Client, scheduler: str | None) -> str:
    """Return where Dask's dashboard is, as far as can be told from here."""
    if not scheduler and not _has_dashboard():
        return "none (pip install bokeh to have one)"
    return client.dashboard_link or "none"


@contextmanager
def connected(scheduler: str | None, workers: int | None) -> Iterator[distributed.Client]:
    """Yield a client of a cluster whose workers have this package; Dask's log is silent meanwhile.

    What matters of it is said in a line of our own.
    """
    logging.disable()
    try:
        with _client(scheduler, workers) as client:
            if scheduler and workers:
                _wait_for(client, scheduler, workers)
            _check_versions(client)
            yield client
    finally:
        logging.disable(logging.NOTSET)


def _client(scheduler: str | None, workers: int | None):
    return _remote(scheduler) if scheduler else _local(workers or dask.system.CPU_COUNT)


@contextmanager
def _local(workers: int) -> Iterator[distributed.Client]:
    with (
        dask.config.set(_LOCAL),
        _local_cluster(workers) as cluster,
        distributed.Client(cluster) as client,
    ):
        yield client


def _local_cluster(workers: int) -> distributed.LocalCluster:
    with _deaf_to_ctrl_c():
        return distributed.LocalCluster(
            n_workers=workers,
            threads_per_worker=1,
            host="127.0.0.1",
            dashboard_address="127.0.0.1:0" if _has_dashboard() else None,
            silence_logs=logging.CRITICAL,
        )


@contextmanager
def _deaf_to_ctrl_c() -> Iterator[None]:
    """Block SIGINT for the threads and processes that begin here: it is for this one to end them.

    A Ctrl+C that comes meanwhile is kept until the block ends.
    """
    if not hasattr(signal, "pthread_sigmask"):
        yield
        return
    resource_tracker.ensure_running()  # would unblock it when it starts
    before = signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGINT})
    try:
        yield
    finally:
        signal.pthread_sigmask(signal.SIG_SETMASK, before)


def _has_dashboard() -> bool:
    from importlib.util import find_spec

    return find_spec("bokeh") is not None


@contextmanager
def _remote(scheduler: str) -> Iterator[distributed.Client]:
    try:
        client = distributed.Client(scheduler, timeout=_CONNECT_SECONDS)
    except (OSError, ValueError) as error:
        raise FleetError(f"No scheduler answers at {scheduler}: {one_line(error)}") from None
    with client:
        yield client


def _wait_for(client: distributed.Client, scheduler: str, workers: int) -> None:
    try:
        client.wait_for_workers(workers, timeout=_WAIT_SECONDS)
    except TimeoutError:
        count = len(client.nthreads())
        raise FleetError(
            f"{count} of {workers} workers came to {scheduler} in {_WAIT_SECONDS} s: start more "
            f'with "dask worker {scheduler}"'
        ) from None


def _check_versions(client: distributed.Client) -> None:
    def version() -> str | None:  # local, so it travels by value: a worker may lack this package
        try:
            from zelvoran_anpr._version import __version__
        except ImportError:
            return None
        return __version__

    for worker, its in client.run(version).items():
        if its != __version__:
            raise FleetError(wrong_version(f"Worker {worker}", its, __version__))
