"""Real servers started, restarted, followed, killed and stopped from the command line."""

import contextlib
import os
import signal
import textwrap
import threading
import urllib.error
import urllib.request
from pathlib import Path

import pytest
from held_engine import Hold
from processes import alive, free_port, wait_until


def test_a_life_from_start_to_stop(user):
    assert user("status").startswith("Server is not running\n  Installed version: ")
    port, first = user.start("--threads", "1")
    assert f"PID: {first}" in user("status")
    restarted = user("restart")
    assert f"stopped (PID: {first})" in restarted
    assert not alive(first)
    status = user("status")
    assert f"  URL: http://127.0.0.1:{port}\n" in status
    assert "  Threads:  1\n" in status
    assert f"server on port {port} stopped" in user("stop")
    assert user("status").startswith("Server is not running\n")
    assert user("list") == "\nNo ANPR servers running.\n"
    assert user("stop") == "No ANPR server is running.\n"


def test_a_killed_server_is_not_running_and_its_port_is_free(user):
    port, pid = user.start()
    os.kill(pid, signal.SIGKILL)
    wait_until(lambda: user("status").startswith("Server is not running\n"))
    again, new = user.start(port=port)
    assert (again, f"PID: {new}" in user("status")) == (port, True)


def test_a_port_in_use_is_told(user):
    port, pid = user.start()
    done = user.run("start", "--daemon", "--port", str(port))
    assert done.returncode == 1
    assert done.stdout == (
        f"Error: Port {port} is in use by an ANPR server (PID {pid}); "
        f"stop it with: zv-anpr server stop --port {port}\n"
    )


def test_a_rotated_token_counts_at_once_and_after_a_restart(user):
    user("token")
    user.configure(server={"require_token": True})
    port, _ = user.start()

    def region():
        return user("region", "--port", str(port))

    old = region()
    assert old.startswith("Region:    univ\n")
    out = user("token", "--rotate")
    assert out.endswith("New token written. Restart the server to use it: zv-anpr server restart\n")
    assert region() == old
    user("restart")
    assert region() == old


def test_follow_goes_on_across_rotations_of_the_log(user, spawn):
    user.configure(limits={"log_mb": 0.002, "log_files": 2})
    port, _ = user.start()
    process = spawn(user.popen("logs", "--follow"))
    seen = []
    threading.Thread(target=lambda: seen.extend(process.stdout), daemon=True).start()

    def followed(mark):
        """One request with a mark in its path; whether such a request was seen in the log."""
        with contextlib.suppress(urllib.error.HTTPError):
            urllib.request.urlopen(f"http://127.0.0.1:{port}/{mark}", timeout=20)
        return any(f'"GET /{mark}"' in line for line in seen)

    wait_until(lambda: followed("before"), 20)
    oldest = Path(f"{user.log()}.2")
    wait_until(lambda: followed("meanwhile") and oldest.exists(), 20)
    wait_until(lambda: followed("after"), 20)
    process.send_signal(signal.SIGINT)
    assert process.wait(30) == 0


def held_server(directory):
    """Holds the models of servers only: the front end's own interpreter loads them as well."""
    hold = Hold(directory)
    hook = directory / "sitecustomize.py"
    body = textwrap.indent(hook.read_text(), "    ")
    hook.write_text(
        f"import sys\nif 'zelvoran_anpr.server.workers.worker' in sys.orig_argv:\n{body}"
    )
    return hold


def test_a_server_that_is_loading(user, spawn, tmp_path):
    hold = held_server(tmp_path / "hold")
    hold.add_to(user.environment)
    port = free_port()
    starting = spawn(user.popen("start", "--daemon", "--port", str(port)))
    wait_until(lambda: user("status").startswith("Server running (PID: "))
    (user.folder / "a.jpg").write_bytes(b"photo")
    wait_until(lambda: "HTTP Error 503" in user("detect", "a.jpg", "--port", str(port)), 20)
    assert starting.poll() is None
    hold.let_go("load")
    out, _ = starting.communicate(timeout=60)
    assert starting.returncode == 0
    assert "✅ ANPR server started (PID: " in out
    assert user("health", "--port", str(port)).startswith("Status:    ok\n")


@pytest.mark.parametrize("whole_terminal", [True, False])
def test_a_server_in_the_foreground_ends_well_on_ctrl_c(user, spawn, whole_terminal):
    port = free_port()
    process = spawn(user.popen("start", "--port", str(port)))
    assert process.stdout.readline().startswith(f"ANPR server on http://127.0.0.1:{port} (PID: ")
    wait_until(lambda: "Status:    ok" in user("health", "--port", str(port)))
    if whole_terminal:
        os.killpg(process.pid, signal.SIGINT)
    else:
        process.send_signal(signal.SIGINT)
    out, _ = process.communicate(timeout=60)
    assert process.returncode == 1
    assert out.endswith("\nOperation cancelled.\n")
    assert user.log().read_text().splitlines()[-1].endswith("zelvoran_anpr.server stopped")
    assert user("list") == "\nNo ANPR servers running.\n"
