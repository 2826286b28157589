"""The sessions that were signed out before their time; kept in a file, for the next start."""

import json
import logging
import threading
import time
from pathlib import Path

from ...atomic_file import write_atomic
from ..config.paths import make_private_dir

_log = logging.getLogger("zelvoran_anpr.server")


class EndedSessions:
    """Names of sessions with the time, in seconds since the epoch, when they would have ended."""

    def __init__(self, path: Path) -> None:
        self._path = path
        self._lock = threading.Lock()
        self._until = _read(path)

    def __contains__(self, name: str) -> bool:
        return name in self._until

    def add(self, name: str, until: int) -> None:
        """Remember a session; it counts as ended even when that cannot be written down."""
        with self._lock:
            now = time.time()
            self._until = {n: t for n, t in self._until.items() if t > now} | {name: until}
            try:
                make_private_dir(self._path.parent)
                write_atomic(self._path, json.dumps(self._until).encode(), 0o600)
            except OSError as error:
                _log.warning("a sign-out is forgotten at the next start: %s", error)


def _read(path: Path) -> dict[str, int]:
    try:
        content = json.loads(path.read_bytes())
    except (OSError, ValueError):
        return {}
    return {str(name): int(until) for name, until in content.items()}
