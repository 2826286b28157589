"""One JSON file per running server, written by the server itself: how others find it."""

import json
import os
import time
from pathlib import Path
from typing import NamedTuple

from ...atomic_file import write_atomic
from ..config.paths import make_private_dir, run_dir
from .identity import machine_mark, process_mark


class Instance(NamedTuple):
    """A running server, as its record tells."""

    pid: int
    mark: str
    """From `process_mark`: the record means this process, not a later one with the same id."""
    machine: str
    host: str
    port: int
    threads: int
    config_path: str | None
    version: str
    started: float
    """Seconds since the epoch; for display only."""
    detached: bool

    @property
    def url(self) -> str:
        return base_url(self.host, self.port)


def base_url(host: str, port: int) -> str:
    """Return the address that a client on this machine reaches a bound address by."""
    reachable = {"0.0.0.0": "127.0.0.1", "": "127.0.0.1", "::": "[::1]"}.get(host, host)
    bracketed = f"[{reachable}]" if ":" in reachable and reachable[0] != "[" else reachable
    return f"http://{bracketed}:{port}"


def write_own_record(
    host: str, port: int, threads: int, config_path: str | None, version: str, detached: bool
) -> Path:
    """Write the record of this process and return its path. Raises OSError."""
    pid = os.getpid()
    mark = process_mark(pid) or ""
    record = Instance(
        pid, mark, machine_mark(), host, port, threads, config_path, version, time.time(), detached
    )
    path = make_private_dir(run_dir()) / f"server-{pid}.json"
    write_atomic(path, json.dumps(record._asdict(), indent=1).encode(), 0o600)
    return path


def running_instances() -> list[Instance]:
    """Return the servers of this user that run on this machine, by port.

    Records of servers that ended without removing theirs are removed; records written on another
    machine, and files that are no record, are left alone.
    """
    here = machine_mark()
    found = []
    for path in sorted(run_dir().glob("server-*.json")):
        record = _read(path)
        if record is None or record.machine != here:
            continue
        if process_mark(record.pid) == record.mark:
            found.append(record)
        else:
            path.unlink(missing_ok=True)
    return sorted(found, key=lambda instance: (instance.port, instance.host))


def _read(path: Path) -> Instance | None:
    try:
        fields = json.loads(path.read_bytes())
        known = Instance(**{name: fields[name] for name in Instance._fields})
    except (OSError, ValueError, KeyError, TypeError):
        return None
    whole = isinstance(known.pid, int) and isinstance(known.port, int) and known.pid > 0
    return known if whole and isinstance(known.host, str) else None
