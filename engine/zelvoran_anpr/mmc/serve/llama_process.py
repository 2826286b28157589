"""One llama-server process: started on a free loopback port, asked for health, ended for sure."""

import contextlib
import http.client
import os
import socket
import subprocess
import sys
from pathlib import Path
from typing import IO

from . import tether

_STOP_SECONDS = 10
_PROBE_SECONDS = 3.0
_LOG_KEPT_BYTES = 2 << 20
_TAIL_BYTES = 8 << 10


def free_port() -> int:
    """A loopback port that was free a moment ago; who loses the race starts again."""
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return int(probe.getsockname()[1])


def is_taken(port: int) -> bool:
    """Whether somebody listens on the loopback port now."""
    with socket.socket() as probe:
        probe.settimeout(1)
        return probe.connect_ex(("127.0.0.1", port)) == 0


class LlamaProcess:
    """Runs `command` through the tether. The key goes by environment: `ps` shows arguments."""

    def __init__(self, command: list[str], key: str, log: Path | None) -> None:
        self.port = free_port()
        self._log = log
        line = [*command, "--host", "127.0.0.1", "--port", str(self.port)]
        with contextlib.ExitStack() as stack:
            out = stack.enter_context(_open_log(log))
            self._log_start = _log_size(log)
            self._child = subprocess.Popen(
                [sys.executable, "-I", "-S", str(tether.__file__), "--", *line],
                stdin=subprocess.PIPE,
                stdout=out,
                stderr=out,
                env={**os.environ, "LLAMA_API_KEY": key},
                # Ctrl+C in the server's terminal is the server's to handle: it drains first.
                start_new_session=os.name != "nt",
                creationflags=getattr(subprocess, "CREATE_NEW_PROCESS_GROUP", 0),
            )

    def alive(self) -> bool:
        return self._child.poll() is None

    def wait(self, timeout: float) -> bool:
        """Whether the process ended within `timeout` seconds."""
        try:
            self._child.wait(timeout)
        except subprocess.TimeoutExpired:
            return False
        return True

    def healthy(self) -> bool:
        """Whether the model is loaded and the server answers."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=_PROBE_SECONDS)
        try:
            connection.request("GET", "/health")
            answer = connection.getresponse()
            answer.read()
            return answer.status == 200 and self.alive()
        except (OSError, http.client.HTTPException):
            return False
        finally:
            connection.close()

    def end(self) -> None:
        """Close the tether, wait for the process, then insist."""
        with contextlib.suppress(OSError):
            if self._child.stdin:
                self._child.stdin.close()
        if not self.wait(_STOP_SECONDS):
            self._child.kill()
            self._child.wait()

    def last_words(self) -> str:
        """The most telling line that it wrote, for an error message."""
        if self._log is None:
            return f"status {self._child.poll()}"
        with contextlib.suppress(OSError), self._log.open("rb") as stream:
            size = _log_size(self._log)
            stream.seek(max(self._log_start, size - _TAIL_BYTES))
            lines = stream.read().decode("utf-8", "replace").splitlines()
            told = [line.strip() for line in lines if line.strip()]
            blamed = [line for line in told if "error" in line.lower() or "fail" in line.lower()]
            return (blamed or told or [f"status {self._child.poll()}"])[-1][:300]
        return f"status {self._child.poll()}"


def _log_size(log: Path | None) -> int:
    try:
        return log.stat().st_size if log else 0
    except OSError:
        return 0


def _open_log(log: Path | None) -> IO[bytes]:
    """Appending, from empty once it has grown large; nowhere when it cannot be written."""
    with contextlib.suppress(OSError):
        if log:
            log.parent.mkdir(parents=True, exist_ok=True)
            if _log_size(log) > _LOG_KEPT_BYTES:
                os.replace(log, log.with_name(f"{log.name}.1"))
            return log.open("ab")
    return open(os.devnull, "wb")
