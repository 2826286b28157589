"""Starting a server in the background: ready when it returns, or a clear word on why not."""

import os
import socket
import subprocess

import pytest
from conftest import Server, jpeg, upload
from processes import free_port, wait_until


def test_a_background_server_is_ready_when_start_returns_and_keeps_nothing_of_its_starter(home):
    reader, writer = os.pipe()
    os.set_inheritable(writer, True)
    port = free_port()
    subprocess.run(
        home.command("start_server", port=port, daemon=True, threads=3), env=home.environment,
        pass_fds=[writer], check=True, capture_output=True,
    )  # fmt: skip
    os.close(writer)
    os.set_blocking(reader, False)
    assert os.read(reader, 1) == b""  # the end: nobody holds the other side
    os.close(reader)
    server = Server(home, port)
    assert server.client().get("/readyz").status_code == 200
    assert os.getsid(server.pid) == server.pid
    log = home.config_dir / "logs" / "server.log"
    assert {os.readlink(f"/proc/{server.pid}/fd/{number}") for number in (1, 2)} == {str(log)}
    status = home.value("get_status")
    assert (status["running"], status["pid"], status["url"]) == (True, server.pid, server.url)
    assert home.value("get_running_version") == home.value("get_installed_version")
    stopped = home.call("stop_server")
    assert stopped.returncode == 0
    assert f"stopped (PID: {server.pid})" in stopped.stdout
    assert not server.alive()
    assert home.value("get_status") == {"running": False, "pid": None, "url": None}
    assert not list((home.config_dir / "run").iterdir())


def test_a_port_held_by_a_server_is_told_with_the_way_to_stop_it(server):
    done = server.home.call("start_server", port=server.port, daemon=True)
    assert done.returncode == 1
    assert f"in use by an ANPR server (PID {server.pid})" in done.stderr
    assert f"zv-anpr server stop --port {server.port}" in done.stderr


def test_a_port_held_by_another_program_is_told_with_its_name(home):
    with socket.socket() as holder:
        holder.bind(("127.0.0.1", 0))
        holder.listen()
        port = holder.getsockname()[1]
        done = home.call("start_server", port=port, daemon=True)
    assert done.returncode == 1
    assert f"Port {port} is in use by " in done.stderr
    assert f"(PID {os.getpid()}); choose another with --port" in done.stderr


def test_a_server_that_cannot_load_its_models_shows_the_end_of_its_log(home):
    home.configure(server={"detector_model": "no_such_model"})
    done = home.call("start_server", port=free_port(), daemon=True)
    assert done.returncode == 1
    assert "no_such_model" in done.stdout
    assert "The server did not start" in done.stderr
    assert home.value("find_all_servers") == []


@pytest.mark.parametrize(
    ("text", "named"),
    [
        ("server:\n  port: [\n", "line 3"),
        ("server: {port: abc}", "server.port must be a whole number from 1 to 65535, not 'abc'"),
        ("server: {region: atlantis}", "atlantis"),
    ],
)
def test_a_configuration_that_cannot_be_used_is_told_in_one_line(home, text, named):
    home.write_config(text)
    done = home.call("start_server", port=None if "abc" in text else free_port(), daemon=True)
    assert done.returncode == 1
    assert named in done.stderr.splitlines()[-1]


def test_a_wider_address_is_refused_without_a_token_and_served_with_one(home):
    refused = home.call("start_server", host="0.0.0.0", port=free_port(), daemon=True)
    assert refused.returncode == 1
    assert "Refusing to listen on 0.0.0.0 without an API token" in refused.stderr
    (home.config_dir / "api_token").write_text("t" * 40)
    server = home.start(host="0.0.0.0")
    assert home.value("get_status")["url"] == f"http://127.0.0.1:{server.port}"
    assert server.client().get("/api/region").status_code == 200


@pytest.mark.parametrize("host", ["localhost", "::1"])
def test_a_server_is_reached_by_the_address_it_tells(home, host):
    import httpx

    with socket.socket(socket.AF_INET6) as probe:
        try:
            probe.bind(("::1", 0))
        except OSError:
            pytest.skip("this machine has no IPv6")
    server = home.start(host=host)
    url = home.value("get_status")["url"]
    assert url == f"http://{host if host == 'localhost' else '[::1]'}:{server.port}"
    assert httpx.get(f"{url}/api/health", trust_env=False).status_code == 200
    if host == "localhost":
        assert server.client().get("/api/health").status_code == 200


def test_a_server_that_is_loading_lives_and_is_not_ready(home, spawn, tmp_path):
    from held_engine import Hold

    hold = Hold(tmp_path / "hold")
    hold.add_to(home.environment)
    process = spawn(home.command("start_server", port=free_port(), daemon=True),
                    env=home.environment, stdout=subprocess.DEVNULL)  # fmt: skip
    wait_until(lambda: home.value("find_all_servers"))
    server = Server(home, home.value("get_status")["port"])
    with server.client() as client:
        assert client.get("/livez").status_code == 200
        assert client.get("/readyz").status_code == 503
        assert client.get("/api/health").json()["status"] == "loading"
        refused = upload(client, jpeg())
        assert (refused.status_code, refused.headers["retry-after"]) == (503, "1")
        assert process.poll() is None  # start has not returned yet
        hold.let_go("load")
        assert process.wait(30) == 0
        assert client.get("/readyz").status_code == 200
