"""Restart and upgrade keep what a server ran with; a mistake stops nothing."""

import os
import signal
import socket

import pytest
from conftest import Server
from processes import free_port, wait_until


def test_a_killed_server_is_not_running_and_restart_starts_another(home):
    server = home.start()
    os.kill(server.pid, signal.SIGKILL)
    wait_until(lambda: not server.alive())
    assert home.value("get_status")["running"] is False
    done = home.call("restart_server", port=server.port)
    assert done.returncode == 0, done.stderr
    after = home.value("get_status")
    assert (after["running"], after["port"]) == (True, server.port)
    assert after["pid"] != server.pid


def test_a_named_configuration_is_used_and_restart_keeps_what_the_server_ran_with(home, tmp_path):
    other = tmp_path / "other.yaml"
    other.write_text("server: {threads: 7, region: japan, detector_model: 320p_fp32}")
    before = home.start(config_path=str(other))
    health = before.client().get("/api/health").json()
    assert (health["threads"], health["region"]) == (7, "japan")
    moved = free_port()
    assert home.call("restart_server", port=moved, threads=3).returncode == 0
    assert not before.alive()
    assert home.call("restart_server").returncode == 0
    after = home.value("get_status")
    assert (after["port"], after["threads"]) == (moved, 3)
    assert Server(home, moved).client().get("/api/health").json()["region"] == "japan"


def test_a_restart_that_could_not_succeed_stops_nothing(server):
    home = server.home
    home.write_config("server: [")
    assert home.call("restart_server").returncode == 1
    home.configure()
    with socket.socket() as holder:
        holder.bind(("127.0.0.1", 0))
        holder.listen()
        busy = holder.getsockname()[1]
        assert home.call("restart_server", port=busy).returncode == 1
    assert server.alive()


@pytest.mark.parametrize("host", ["no-such-host.invalid", "192.0.2.1"])
@pytest.mark.parametrize("operation", ["restart_server", "upgrade_server"])
def test_an_address_that_nobody_can_listen_on_stops_nothing(server, operation, host):
    done = server.home.call(operation, host=host)
    assert done.returncode == 1
    assert f"Cannot listen on {host}: " in done.stderr.splitlines()[-1]
    assert done.stdout == ""
    assert server.alive()


def test_a_failed_upgrade_keeps_the_running_server(server):
    options = (
        "--no-index --find-links /nonexistent --no-build-isolation --force-reinstall --no-deps"
    )
    done = server.home.call("upgrade_server", pip_args=options)
    assert done.returncode == 1
    assert "running servers go on" in done.stderr
    assert server.home.value("get_status")["pid"] == server.pid


def test_an_upgrade_restarts_what_runs_and_keeps_its_port(home, tmp_path):
    import zipfile

    wheel = tmp_path / "zelvoran_anpr-99.0-py3-none-any.whl"
    info = "zelvoran_anpr-99.0.dist-info"
    with zipfile.ZipFile(wheel, "w") as archive:
        archive.writestr(f"{info}/METADATA", "Metadata-Version: 2.1\nName: zelvoran-anpr\n"
                         "Version: 99.0\n")  # fmt: skip
        archive.writestr(f"{info}/WHEEL", "Wheel-Version: 1.0\nTag: py3-none-any\n")
        archive.writestr(f"{info}/RECORD", "")
    server = home.start(threads=3)
    target = tmp_path / "installed here"
    options = f"--no-index --no-deps --find-links {tmp_path} --target '{target}'"
    done = home.call("upgrade_server", pip_args=options)
    assert done.returncode == 0, done.stderr
    assert (target / info).exists()
    after = home.value("get_status")
    assert after["pid"] != server.pid
    assert (after["port"], after["threads"]) == (server.port, 3)
