"""One JSON file per running server, written by the server itself: how others find it."""

import json
import os
import time
from pathlib import Path
from typing import NamedTuple

from ...atomic_file import write_atomic
from ..config.paths import make_private_dir, run_dir
from ..config.settings import Settings
from .identity import machine_mark, process_mark

STARTING, PREPARED, LOADING, READY = "starting", "prepared", "loading", "ready"


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
    state: str = "ready"
    """How far it has come: STARTING and PREPARED do not listen yet, LOADING and READY do."""
    start_id: str = ""
    """What whoever started it knows it by."""

    @property
    def url(self) -> str:
        return base_url(self.host, self.port)


def base_url(host: str, port: int) -> str:
    """Return the address that a client on this machine reaches a bound address by."""
    reachable = {"0.0.0.0": "127.0.0.1", "": "127.0.0.1", "::": "[::1]"}.get(host, host)
    bracketed = f"[{reachable}]" if ":" in reachable and reachable[0] != "[" else reachable
    return f"http://{bracketed}:{port}"


class OwnRecord:
    """The record of this process, which says how far it has come."""

    def __init__(self, settings: Settings, version: str, detached: bool, start_id: str) -> None:
        pid = os.getpid()
        self._instance = _instance(pid, settings, version, detached)._replace(start_id=start_id)
        self._path = _record_path(pid)

    def write(self, state: str) -> None:
        """Raises OSError."""
        _write(self._path, self._instance._replace(state=state))

    def remove(self) -> None:
        self._path.unlink(missing_ok=True)


def write_starting_record(pid: int, settings: Settings) -> None:
    """Note a process just started, so that it can be stopped before it says a word itself.

    One that has said it already keeps its own.
    """
    path = _record_path(pid)
    if not path.exists():
        _write(path, _instance(pid, settings, "", detached=True)._replace(state=STARTING))


def remove_record(pid: int) -> None:
    _record_path(pid).unlink(missing_ok=True)


def running_instances() -> list[Instance]:
    """Return the servers of this user that listen on this machine, by port."""
    return [one for one in all_instances() if one.state not in (STARTING, PREPARED)]


def all_instances() -> list[Instance]:
    """Return all of them, those included that do not listen yet.

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


def _record_path(pid: int) -> Path:
    return run_dir() / f"server-{pid}.json"


def _instance(pid: int, settings: Settings, version: str, detached: bool) -> Instance:
    server = settings.server
    return Instance(
        pid, process_mark(pid) or "", machine_mark(), server.host, server.port, server.threads,
        settings.source, version, time.time(), detached,
    )  # fmt: skip


def _write(path: Path, instance: Instance) -> None:
    make_private_dir(path.parent)
    write_atomic(path, json.dumps(instance._asdict(), indent=1).encode(), 0o600)


def _read(path: Path) -> Instance | None:
    try:
        fields = json.loads(path.read_bytes())
        known = Instance(**{name: fields[name] for name in Instance._fields if name in fields})
    except (OSError, ValueError, KeyError, TypeError):
        return None
    whole = isinstance(known.pid, int) and isinstance(known.port, int) and known.pid > 0
    return known if whole and isinstance(known.host, str) else None
