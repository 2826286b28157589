"""How many calls a backend made today, kept across restarts and shared by servers of one folder."""

import datetime
import json
import threading
from collections.abc import Callable
from pathlib import Path
from typing import Any

from filelock import FileLock

from ...atomic_file import write_atomic
from ..errors import MmcError

FILE_NAME = "mmc_usage.json"


class DailyCounter:
    """Counts per local calendar day; `limit` 0 means none. Without a folder it forgets at exit."""

    def __init__(
        self,
        name: str,
        folder: Path | None,
        limit: int = 0,
        today: Callable[[], datetime.date] = datetime.date.today,
    ) -> None:
        self._name, self._limit, self._today = name, limit, today
        self._path = folder / FILE_NAME if folder else None
        self._memory: dict[str, Any] = {}
        self._guard = threading.Lock()

    def take(self) -> None:
        """Count one call before it is made; raises MmcError when the day's quota is used up."""

        def more(calls: int) -> int:
            if self._limit and calls >= self._limit:
                raise MmcError(
                    f"today's {self._limit} MMC calls are used up; they renew at midnight"
                )
            return calls + 1

        self._change(more)

    def give_back(self) -> None:
        """A counted call never left this machine."""
        self._change(lambda calls: max(calls - 1, 0))

    def calls(self) -> int:
        with self._guard:
            return self._of_today(self._load())

    def status(self) -> dict[str, Any]:
        calls = self.calls()
        if not self._limit:
            limit = remaining = "unlimited"
            return _status(calls, limit, remaining)
        return _status(calls, self._limit, max(self._limit - calls, 0))

    def _change(self, step: Callable[[int], int]) -> None:
        with self._guard:
            try:
                self._change_file(step)
            except (OSError, NotImplementedError):
                # A full or read-only disk stops no recognition: count on without the file.
                self._memory, self._path = self._load(), None
                self._change_file(step)

    def _change_file(self, step: Callable[[int], int]) -> None:
        if self._path is None:
            return self._store(step(self._of_today(self._load())))
        lock = FileLock(self._path.with_name(f".{self._path.name}.lock"), mode=0o600)
        with lock.acquire(poll_interval=0.005):
            self._store(step(self._of_today(self._load())))

    def _of_today(self, data: dict[str, Any]) -> int:
        calls = data.get("calls") if data.get("date") == self._today().isoformat() else None
        count = calls.get(self._name) if isinstance(calls, dict) else None
        return count if isinstance(count, int) and count > 0 else 0

    def _load(self) -> dict[str, Any]:
        if self._path is None:
            return self._memory
        try:
            data = json.loads(self._path.read_text(encoding="utf-8"))
        except (OSError, ValueError):
            return {}
        return data if isinstance(data, dict) else {}

    def _store(self, count: int) -> None:
        day, data = self._today().isoformat(), self._load()
        calls = data.get("calls") if data.get("date") == day else None
        fresh = {"date": day, "calls": {**(calls if isinstance(calls, dict) else {})}}
        fresh["calls"][self._name] = count
        self._memory = fresh
        if self._path is not None:
            write_atomic(self._path, json.dumps(fresh).encode())


def _status(calls: int, limit: int | str, remaining: int | str) -> dict[str, Any]:
    return {"mmc_calls_today": calls, "mmc_daily_limit": limit, "mmc_remaining": remaining}
