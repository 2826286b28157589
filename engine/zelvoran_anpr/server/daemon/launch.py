"""A server process on its way up, as the one that started it follows it."""

import contextlib
import secrets
import sys
import time

from ..config.paths import log_path
from ..config.settings import Settings
from .identity import process_mark
from .records import PREPARED, READY, Instance, all_instances, remove_record, write_starting_record
from .spawn import spawn

_POLL_SECONDS = 0.05
_LOG_LINES = 20


class Launch:
    """Begins a server; one that `replaces` another takes its port only when told to.

    What it has come to is known from its own record alone: whoever answers on the port may be
    another one.
    """

    def __init__(self, settings: Settings, replaces: bool = False) -> None:
        self._seconds = settings.limits.start_seconds
        self._log_start = _log_size()
        self._id = secrets.token_hex(8)
        self._process = spawn(settings, self._id, replaces)
        self._mark = process_mark(self._process.pid)
        try:
            write_starting_record(self._process.pid, settings)
        except OSError:
            self.kill()
            raise

    def wait_prepared(self) -> None:
        """Return when it only lacks the port. Raises RuntimeError; it no longer runs then."""
        self._wait(PREPARED)

    def take_over(self) -> int:
        """Let it take the port; return its process id when it is ready. Raises RuntimeError."""
        with contextlib.suppress(OSError):  # it has ended: told in a moment
            self._process.stdin.write(b"go\n")
            self._process.stdin.close()
        return self.wait_ready()

    def wait_ready(self) -> int:
        """Return its process id when it is ready. Raises RuntimeError; it no longer runs then."""
        found = self._wait(READY)
        self._process.returncode = 0  # it outlives us: nobody is going to wait for it
        if found.pid != self._process.pid:  # some systems start Python through another process
            remove_record(self._process.pid)
        return found.pid

    def kill(self) -> None:
        from .signals import kill_tree

        if self._process.poll() is None and self._mark:
            kill_tree(self._process.pid, self._mark)
        self._process.wait()
        remove_record(self._process.pid)

    def _wait(self, wanted: str) -> Instance:
        try:
            found = self._wait_for_record(wanted)
        except BaseException:
            self.kill()
            raise
        if isinstance(found, Instance):
            return found
        self.kill()
        _print_log_end(self._log_start)
        raise RuntimeError(f"The server did not start: {found}; the log is {log_path()}")

    def _wait_for_record(self, wanted: str) -> Instance | str:
        deadline = time.monotonic() + self._seconds
        while time.monotonic() < deadline:
            status = self._process.poll()
            if status is not None:
                return f"it ended with status {status}"
            for instance in all_instances():
                if instance.start_id == self._id and instance.state == wanted:
                    return instance
            time.sleep(_POLL_SECONDS)
        return f"it was not ready within {self._seconds:g} s"


def _log_size() -> int:
    try:
        return log_path().stat().st_size
    except FileNotFoundError:
        return 0


def _print_log_end(start: int) -> None:
    data = log_path().read_bytes()
    new = data[start:] if len(data) >= start else data  # shorter: the log was rotated meanwhile
    for line in new.decode("utf-8", "replace").splitlines()[-_LOG_LINES:]:
        print(f"   {line}")
    sys.stdout.flush()
