"""Keeps one llama-server running: waits for health, restarts with back-off, ends it at last.

The process belongs to the supervisor's own thread, which lives as long as the backend does.
"""

import threading
import time
from collections.abc import Callable

from ..errors import MmcError
from .llama_process import LlamaProcess, is_taken

_POLL_SECONDS = 0.1
_CHECK_SECONDS = 10.0
# So many unanswered checks in a row, with no request under way, mean that it hangs.
_MISSED_CHECKS = 3
_FIRST_BACKOFF, _LONGEST_BACKOFF = 1.0, 60.0
# A run of this many seconds wipes out earlier failures.
_STEADY_SECONDS = 60.0
# A port can be taken between choosing and binding it.
_PORT_ATTEMPTS = 3


class Supervisor:
    """`spawn` starts one process; `busy` tells whether a request is under way."""

    def __init__(
        self, spawn: Callable[[], LlamaProcess], busy: Callable[[], bool], start_timeout: float
    ) -> None:
        self._spawn, self._busy, self._start_timeout = spawn, busy, start_timeout
        self._thread: threading.Thread | None = None
        self._stopping = threading.Event()
        self._settled = threading.Event()
        self._process: LlamaProcess | None = None
        self._lost_port = False
        self.error = "llama-server is not running"

    def start(self) -> None:
        """Block until the model answers; raises MmcError with llama-server's own last words."""
        self._stopping.clear()
        self._settled.clear()
        self._thread = threading.Thread(target=self._run, name="llama-supervisor", daemon=True)
        self._thread.start()
        self._settled.wait()
        if self.port() is None:
            self.stop()
            raise MmcError(self.error)

    def stop(self) -> None:
        self._stopping.set()
        if self._thread:
            self._thread.join()
            self._thread = None
        self.error = self.error or "llama-server is not running"

    def port(self) -> int | None:
        """The loopback port, or None while nothing answers there."""
        process = self._process
        return process.port if process and process.alive() else None

    def _run(self) -> None:
        process = self._first()
        self._settled.set()
        failures = 0
        while process and not self._stopping.is_set():
            lived = self._watch(process)
            if not self._stopping.is_set() or not process.alive():
                self.error = f"llama-server ended ({process.last_words()})"
            self._process = None
            process.end()
            failures = 1 if lived > _STEADY_SECONDS else failures + 1
            process = self._again(failures)

    def _first(self) -> LlamaProcess | None:
        for _ in range(_PORT_ATTEMPTS):
            self._lost_port = False
            process = self._try()
            if process or not self._lost_port:
                return process
        return None

    def _again(self, failures: int) -> LlamaProcess | None:
        """Start it anew, after a pause that doubles with each failure, until it works or stops."""
        while not self._stopping.wait(min(_FIRST_BACKOFF * 2 ** (failures - 1), _LONGEST_BACKOFF)):
            if process := self._try():
                return process
            failures = min(failures + 1, 16)
        return None

    def _try(self) -> LlamaProcess | None:
        """One start; None with `error` set when it does not become healthy."""
        try:
            process = self._spawn()
        except (MmcError, OSError) as error:
            self.error = str(error)
            return None
        deadline = time.monotonic() + self._start_timeout
        while not self._stopping.is_set() and time.monotonic() < deadline:
            if process.healthy():
                self.error, self._process = "", process
                return process
            if process.wait(_POLL_SECONDS):
                break
        late = process.alive()
        process.end()
        self._lost_port = is_taken(process.port)
        cause = f"not ready within {self._start_timeout:g} s" if late else process.last_words()
        self.error = f"llama-server did not start: {cause}"
        return None

    def _watch(self, process: LlamaProcess) -> float:
        """Return, with the seconds it lived, when it ended, hangs, or is to stop."""
        started = checked = time.monotonic()
        missed = 0
        while not self._stopping.is_set() and not process.wait(_POLL_SECONDS):
            if time.monotonic() - checked >= _CHECK_SECONDS:
                missed = 0 if self._busy() or process.healthy() else missed + 1
                checked = time.monotonic()
            if missed >= _MISSED_CHECKS:
                break
        return time.monotonic() - started
