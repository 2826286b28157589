"""Starts a server: here in the foreground, or detached and returning when it is ready."""

import subprocess
import sys
import time
from http.client import HTTPConnection, HTTPException
from urllib.parse import urlsplit

from ..config.paths import log_path
from ..config.settings import Settings
from .options import StartOptions, require_token, resolve
from .ports import check_free
from .records import base_url
from .spawn import spawn

_POLL_SECONDS = 0.1
_LOG_LINES = 20


def start(options: StartOptions, detached: bool) -> None:
    """Start a server; raises RuntimeError or ConfigError with one line when it cannot."""
    settings = resolve(options)
    require_token(settings.server.host)
    check_free(settings.server.host, settings.server.port)
    if detached:
        start_detached(settings)
    else:
        from ..serve import serve

        serve(settings, detached=False)


def start_detached(settings: Settings) -> None:
    """Start a server process of its own and return once it answers that it is ready."""
    for line in settings.warnings:
        print(f"Warning: {line}", file=sys.stderr)
    url = base_url(settings.server.host, settings.server.port)
    print(f"Starting ANPR server on {url} ...", flush=True)
    log_start = _log_size()
    process = spawn(settings)
    try:
        problem = _wait_ready(process, url, settings.limits.start_seconds)
    except BaseException:
        process.kill()
        process.wait()
        raise
    if problem:
        _print_log_end(log_start)
        raise RuntimeError(f"The server did not start: {problem}; the log is {log_path()}")
    process.returncode = 0  # it outlives us: nobody is going to wait for it
    print(f"✅ ANPR server started (PID: {process.pid})")
    print(f"   Dashboard: {url}/", flush=True)


def _wait_ready(process: subprocess.Popen, url: str, seconds: float) -> str | None:
    """Return None once the server is ready, else what went wrong; it no longer runs then."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        status = process.poll()
        if status is not None:
            return f"it ended with status {status}"
        if _is_ready(url):
            return None
        time.sleep(_POLL_SECONDS)
    process.kill()
    process.wait()
    return f"it was not ready within {seconds:g} s"


def _is_ready(url: str) -> bool:
    address = urlsplit(url)
    connection = HTTPConnection(address.hostname or "", address.port, timeout=2)
    try:
        connection.request("GET", "/readyz")
        return connection.getresponse().status == 200
    except (OSError, HTTPException):
        return False
    finally:
        connection.close()


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
