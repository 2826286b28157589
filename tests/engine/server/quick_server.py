"""Servers that are talked to while their models load: enough for who may ask what."""

import contextlib
import subprocess
import sys
from collections.abc import Iterator

import httpx
from conftest import Home, Server
from processes import free_port, wait_until


@contextlib.contextmanager
def quick_server(home: Home, *arguments: str) -> Iterator[Server]:
    """A server of this user on a free port while the block runs."""
    port = free_port()
    command = [sys.executable, "-m", "zelvoran_anpr.server.serve", "--port", str(port), *arguments]
    with open(home.config_dir / "errors", "ab") as errors:
        process = subprocess.Popen(command, env=home.environment, stdout=errors, stderr=errors)
    try:
        wait_until(
            lambda: answers(f"http://127.0.0.1:{port}/livez") or process.poll() is not None, 300
        )
        assert process.poll() is None, (home.config_dir / "errors").read_text()
        yield Server(home, port)
    finally:
        process.kill()
        process.wait()


def answers(url: str) -> bool:
    try:
        return httpx.get(url, trust_env=False).status_code < 500
    except httpx.TransportError:
        return False
