"""A real scheduler and real workers, each a process of its own on loopback."""

import signal
import subprocess
import sys
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path

from processes import free_port, wait_until


class Cluster:
    """`kill` sends SIGKILL; what was killed can be started again at the same address."""

    def __init__(self, folder: Path) -> None:
        self._folder = folder
        self.port = free_port()
        self.address = f"tcp://127.0.0.1:{self.port}"
        self.scheduler: subprocess.Popen | None = None
        self.workers: list[subprocess.Popen] = []

    def start_scheduler(self) -> None:
        self.scheduler = self._start("scheduler", "--port", str(self.port))
        wait_until(self._listens, 120)

    def start_worker(self, **options) -> subprocess.Popen:
        worker = self._start(
            "worker", self.address, "--nthreads", "1", "--no-nanny",
            "--local-directory", str(self._folder), **options,
        )  # fmt: skip
        self.workers.append(worker)
        return worker

    def stop(self) -> None:
        for process in [*self.workers, self.scheduler]:
            if process:
                kill(process)

    def _start(self, kind: str, *arguments: str, **options) -> subprocess.Popen:
        command = [sys.executable, "-m", f"distributed.cli.dask_{kind}", *arguments]
        log = (self._folder / "dask.log").open("ab")
        with log:
            return subprocess.Popen(
                [*command, "--host", "127.0.0.1", "--no-dashboard"],
                stdout=log,
                stderr=log,
                **options,
            )

    def _listens(self) -> bool:
        import socket

        with socket.socket() as probe:
            return probe.connect_ex(("127.0.0.1", self.port)) == 0


def kill(process: subprocess.Popen) -> None:
    process.send_signal(signal.SIGKILL)
    process.wait()


@contextmanager
def cluster_in(folder: Path, workers: int) -> Iterator[Cluster]:
    cluster = Cluster(folder)
    try:
        cluster.start_scheduler()
        for _ in range(workers):
            cluster.start_worker()
        yield cluster
    finally:
        cluster.stop()
