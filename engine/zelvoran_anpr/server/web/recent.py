"""The last recognitions, for the dashboard: kept in memory only, without the photos."""

import threading
from collections import deque
from typing import Any

_KEPT = 100


class RecentRequests:
    """A short history, newest first; thread-safe."""

    def __init__(self) -> None:
        self._entries: deque[dict[str, Any]] = deque(maxlen=_KEPT)
        self._lock = threading.Lock()

    def add(self, entry: dict[str, Any]) -> None:
        with self._lock:
            self._entries.appendleft(entry)

    def newest(self, count: int) -> list[dict[str, Any]]:
        with self._lock:
            return list(self._entries)[:count]
