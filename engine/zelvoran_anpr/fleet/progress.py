"""How far a run is, on standard error: one line that is drawn anew, or a line now and then."""

import time
from typing import TextIO

_REDRAW_SECONDS = 1
_LINE_SECONDS = 30


class Progress:
    def __init__(self, total: int, stream: TextIO) -> None:
        self._total, self._stream = total, stream
        self._begun = self._shown_at = time.monotonic()
        self._every = _REDRAW_SECONDS if stream.isatty() else _LINE_SECONDS

    def show(self, done: int, workers: int) -> None:
        now = time.monotonic()
        if now - self._shown_at >= self._every:
            self._shown_at = now
            self._draw(progress_text(done, self._total, now - self._begun, workers))

    def _draw(self, text: str) -> None:
        line = f"\r{text}\x1b[K" if self._stream.isatty() else f"{text}\n"
        self._stream.write(line)
        self._stream.flush()

    def close(self) -> None:
        if self._stream.isatty():
            self._stream.write("\r\x1b[K")
            self._stream.flush()


def progress_text(done: int, total: int, seconds: float, workers: int) -> str:
    """Return the progress after so many seconds, as people read it."""
    rate = done / seconds
    left = span((total - done) / rate) + " left" if done else "no photo read yet"
    people = "1 worker" if workers == 1 else f"{workers} workers"
    return f"{done:,} of {total:,} photos, {rate:.1f}/s, {left}, {people}"


def span(seconds: float) -> str:
    """Return hours, minutes and seconds: 1:02:05, or 2:05 below an hour."""
    minutes, rest = divmod(round(seconds), 60)
    hours, minutes = divmod(minutes, 60)
    return f"{hours}:{minutes:02d}:{rest:02d}" if hours else f"{minutes}:{rest:02d}"
