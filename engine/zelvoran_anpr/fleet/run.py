"""The driver's part of a run: takes rows as they come and writes them in parts."""

import time
from dataclasses import dataclass
from threading import Event

from .dealing import Dealer
from .errors import FleetError
from .fetching import StorageError
from .progress import Progress
from .target import Target
from .worker import Row

PART_ROWS = 4_000  # a megabyte or two
OUTAGE_PHOTOS = 64  # as many failures before the first success end the run


@dataclass
class Count:
    """What rows come to."""

    photos: int = 0
    plates: int = 0
    errors: int = 0
    unfetched: int = 0
    """Of the errors, those that another run may be without."""

    def add(self, rows: list[Row]) -> None:
        self.photos += sum(row["plate"] == 0 for row in rows)
        self.plates += sum(row["text"] is not None for row in rows)
        self.errors += sum(row["error"] is not None and row["width"] is None for row in rows)
        self.unfetched += sum(StorageError.made(row["error"]) for row in rows)


class Run:
    """Reads photos into a target; `written` counts what has reached it."""

    def __init__(self, target: Target, progress: Progress, stop: Event) -> None:
        self._target, self._progress, self._stop = target, progress, stop
        self._begun = self._written_at = time.monotonic()
        self._rows: list[Row] = []
        self._taken, self.written = Count(), Count()

    def read(self, dealer: Dealer) -> None:
        """Read all photos, or until stopped; whatever ends it, rows that came are written."""
        try:
            for rows in dealer.results():
                self._take(rows)
                self._progress.show(self._taken.photos, dealer.workers)
                if self._stop.is_set():
                    break
            self._check_storage(1)
        finally:
            self._progress.close()
            self._write()

    def _take(self, rows: list[Row]) -> None:
        self._rows += rows
        self._taken.add(rows)
        self._check_storage(OUTAGE_PHOTOS)
        if self._taken.photos > self._taken.unfetched and self._is_due(time.monotonic()):
            self._write()

    def _is_due(self, now: float) -> bool:
        """At most so much work is lost with the driver: seconds of it at first, later a minute."""
        seconds = min(60, max(2, (now - self._begun) / 30))
        return len(self._rows) >= PART_ROWS or now - self._written_at > seconds

    def _check_storage(self, least: int) -> None:
        """A storage that gives nothing at all is no reason to give every photo an error."""
        if self._taken.photos >= least and self._taken.photos == self._taken.unfetched:
            error = self._rows[-1]["error"].removeprefix(StorageError.MARK)
            self._rows.clear()
            raise FleetError(f"No photo can be fetched, check address and permissions: {error}")

    def _write(self) -> None:
        # Taken out first: whether a write that failed has arrived, the next run finds out.
        rows, self._rows = self._rows, []
        if rows:
            self._target.write(rows)
            self.written.add(rows)
            self._written_at = time.monotonic()
