"""A server in the foreground ends with a signal, or with the program that runs it."""

import signal
import subprocess
import sys

import pytest
from processes import alive, free_port, wait_until


@pytest.mark.parametrize(("number", "status"), [(signal.SIGTERM, 0), (signal.SIGINT, -2)])
def test_a_signal_ends_a_foreground_server_gracefully(home, spawn, number, status):
    port = free_port()
    process = spawn(
        home.command("start_server", port=port), env=home.environment,
        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
    )  # fmt: skip
    wait_until(lambda: _ready(home))
    process.send_signal(number)
    # A Python program that Ctrl+C ends reports that by signal, as shells expect.
    assert process.wait(20) == status
    assert f"ANPR server on http://127.0.0.1:{port} (PID: {process.pid})" in process.stdout.read()
    assert home.value("find_all_servers") == []


def _ready(home) -> bool:
    import httpx

    status = home.value("get_status")
    try:
        url = f"{status['url']}/readyz"
        return status["running"] and httpx.get(url, trust_env=False).status_code == 200
    except httpx.HTTPError:
        return False


def test_a_foreground_server_ends_with_the_program_that_runs_it(home, spawn):
    front_end = "import subprocess, sys; subprocess.run(sys.argv[1:])"
    command = home.command("start_server", port=free_port())
    process = spawn(
        [sys.executable, "-c", front_end, *command], env=home.environment,
        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
    )  # fmt: skip
    wait_until(lambda: _ready(home))
    server = home.value("get_status")["pid"]
    process.kill()
    process.wait()
    wait_until(lambda: not alive(server))
