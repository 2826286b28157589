"""Deals photos to Dask's workers in chunks, a bounded number at a time, and takes their rows.

A chunk whose worker died is done again by another, which is Dask's doing. Chunks that kill every
worker they meet are split, and single photos that seem to do so are read alone in the end: what is
in a worker's queue when it dies is suspected as well.
"""

import queue
import time
from collections.abc import Iterator
from itertools import islice

from distributed import CancelledError, Client, Future
from distributed.scheduler import KilledWorker

from .errors import FleetError, one_line
from .job import Job
from .worker import Row, read_chunk, row_of_error

LARGEST_CHUNK = 32  # photos: about a second of work, and a few milliseconds of Dask's
LEAST_UNDER_WAY = 64  # chunks, so that a cluster which grows on demand sees some
CHUNKS_PER_SLOT = 3
LONGEST_ALONE = 120  # seconds without a worker, where nobody will start one
_COUNT_SECONDS = 5
_WAIT_SECONDS = 0.5


class Dealer:
    """`patient`: wait for workers as long as it takes, as somebody may start some."""

    def __init__(
        self, client: Client, job: Job, photos: Iterator[str], total: int, patient: bool
    ) -> None:
        self._client, self._job, self._patient = client, job, patient
        self._photos, self._left = photos, total
        self._under_way: dict[Future, list[str]] = {}
        self._ended: queue.SimpleQueue[Future] = queue.SimpleQueue()
        self._suspects: list[str] = []
        self._alone: list[str] = []
        self._counted_at, self._seen_at = float("-inf"), time.monotonic()
        self.workers = 0
        self._slots = 0  # photos that the cluster reads at the same time

    def results(self) -> Iterator[list[Row]]:
        """Yield the rows of chunks as they end, and nothing now and then while none does."""
        self._fill()
        while self._under_way:
            try:
                future = self._ended.get(timeout=_WAIT_SECONDS)
            except queue.Empty:
                yield []
            else:
                yield self._rows(future)
            self._fill()

    def _fill(self) -> None:
        self._count_workers()
        while len(self._under_way) < max(LEAST_UNDER_WAY, CHUNKS_PER_SLOT * self._slots):
            chunk = list(islice(self._photos, self._chunk_size()))
            if not chunk:
                return self._try_suspect()
            self._left -= len(chunk)
            self._submit(chunk)

    def _chunk_size(self) -> int:
        """Chunks get smaller towards the end, so that all workers end at about the same time."""
        return min(LARGEST_CHUNK, max(1, self._left // (4 * max(self._slots, 1))))

    def _count_workers(self) -> None:
        now = time.monotonic()
        if now - self._counted_at < _COUNT_SECONDS:
            return
        self._counted_at = now
        try:
            threads = self._client.nthreads()
        except OSError as error:
            raise _gone(error) from None
        self.workers, self._slots = len(threads), sum(threads.values())
        self._check_alone(now)

    def _check_alone(self, now: float) -> None:
        if self.workers or self._patient:
            self._seen_at = now
        elif now - self._seen_at > LONGEST_ALONE:
            raise FleetError("All workers died and did not come back: run this again to go on")

    def _submit(self, chunk: list[str]) -> None:
        future = self._client.submit(read_chunk, self._job, chunk, pure=False)
        self._under_way[future] = chunk
        future.add_done_callback(self._ended.put)

    def _rows(self, future: Future) -> list[Row]:
        chunk = self._under_way.pop(future)
        try:
            return future.result()
        except KilledWorker:
            return self._split(chunk)
        except (FleetError, ValueError) as error:
            raise FleetError(one_line(error)) from None
        except (OSError, CancelledError) as error:
            raise _gone(error) from None
        except Exception as error:  # noqa: BLE001  whatever the cluster cannot do is one line too
            raise FleetError(
                f"A worker failed: {type(error).__name__}: {one_line(error)}"
            ) from None

    def _split(self, chunk: list[str]) -> list[Row]:
        if chunk is self._alone:
            text = "Every worker that read the photo died: it may need more memory than they have"
            return [row_of_error(self._job, chunk[0], text)]
        if len(chunk) == 1:
            self._suspects += chunk
            return []
        half = len(chunk) // 2
        self._submit(chunk[:half])
        self._submit(chunk[half:])
        return []

    def _try_suspect(self) -> None:
        """Read a photo while no other is under way, which might be the one that kills."""
        if self._suspects and not self._under_way:
            self._alone = [self._suspects.pop()]
            self._submit(self._alone)


def _gone(error: Exception) -> FleetError:
    return FleetError(
        f"The scheduler is gone ({one_line(error, 100)}): start it and its workers, then run this "
        "again"
    )
