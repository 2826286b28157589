"""One self-overwriting progress line on standard error, only where a person watches."""

import os
import sys
import time
from typing import TextIO

_REDRAW_SECONDS = 0.2
_MIB = 1 << 20


def watched(stream: TextIO) -> bool:
    """Whether `stream` is a terminal whose user did not ask for plain output."""
    env = os.environ
    plain = "NO_COLOR" in env or "CI" in env or env.get("TERM") == "dumb"
    return stream.isatty() and not plain


class Progress:
    """Shows `label: done/total MiB, percent, rate`; silent when nobody watches."""

    def __init__(self, label: str, total: int, stream: TextIO | None = None) -> None:
        self._label, self._total = label, max(total, 1)
        self._stream = stream or sys.stderr
        self._shown = watched(self._stream)
        self._started, self._first = time.monotonic(), None
        self._drawn_at = 0.0

    def update(self, done: int) -> None:
        """`done`: bytes that are on disk now."""
        if not self._shown:
            return
        if self._first is None:
            self._first = done
        now = time.monotonic()
        if done >= self._total or now - self._drawn_at >= _REDRAW_SECONDS:
            self._drawn_at = now
            self._draw(done, (done - self._first) / max(now - self._started, 0.001))

    def _draw(self, done: int, rate: float) -> None:
        text = (
            f"\r   {self._label}: {done / _MIB:.0f}/{self._total / _MIB:.0f} MiB"
            f" ({100 * done // self._total} %), {rate / _MIB:.1f} MiB/s"
        )
        self._stream.write(f"{text}\x1b[K")
        self._stream.flush()

    def close(self) -> None:
        if self._shown and self._first is not None:
            self._stream.write("\r\x1b[K")
            self._stream.flush()


def hint(text: str) -> None:
    """One line of advice on standard error."""
    print(f"   {text}", file=sys.stderr, flush=True)
