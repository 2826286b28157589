"""More connections than are answered: the rest goes on, probes get through, the log stays small."""

import contextlib
import os
import re
import subprocess
from pathlib import Path

import pytest
from conftest import Server, jpeg, running, upload
from processes import free_port, wait_until


@pytest.fixture(scope="module")
def crowded(tmp_path_factory):
    """A server for eight clients at the same time that waits long for each."""
    limits = {"connections": 8, "header_seconds": 60}
    with running(tmp_path_factory.mktemp("crowded"), limits=limits) as made:
        yield made


@contextlib.contextmanager
def idle(server, count: int):
    with contextlib.ExitStack() as held:
        yield [held.enter_context(server.connect()) for _ in range(count)]


def descriptors(server) -> int:
    return len(os.listdir(f"/proc/{server.pid}/fd"))


def test_probes_are_answered_and_the_rest_is_told_in_json(crowded):
    with idle(crowded, 8):
        for path in ("/livez", "/readyz"):
            with crowded.client() as client:
                assert client.get(path).status_code == 200
        with crowded.client() as client:
            refused = client.get("/api/region")
            assert refused.status_code == 503
            assert refused.json()["success"] is False
            assert int(refused.headers["retry-after"]) >= 1
    with crowded.client() as client:
        wait_until(lambda: client.get("/api/region").status_code == 200)


def test_however_many_connect_few_are_held_and_a_probe_gets_through(crowded):
    before = descriptors(crowded)
    with idle(crowded, 300):
        with crowded.client() as client:
            assert client.get("/livez").status_code == 200
        wait_until(lambda: descriptors(crowded) <= before + 8 + 32 + 2)
    wait_until(lambda: descriptors(crowded) <= before)
    with crowded.client() as client:
        assert upload(client, jpeg()).status_code == 200


def test_the_limit_of_files_is_raised_at_the_start(home):
    import resource

    _, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    command = home.command("start_server", daemon=True, port=free_port())
    done = subprocess.run(
        ["sh", "-c", 'ulimit -S -n 300; exec "$@"', "sh", *command],
        env=home.environment, capture_output=True, text=True, check=False,
    )  # fmt: skip
    assert done.returncode == 0, done.stderr
    (found,) = home.value("find_all_servers")
    limits = Path(f"/proc/{found['pid']}/limits").read_text()
    assert re.search(rf"Max open files\s+{hard}\s+{hard}", limits)


def test_a_hard_limit_of_files_lowers_the_connections_and_says_so(home):
    port = free_port()
    command = home.command("start_server", daemon=True, port=port)
    done = subprocess.run(
        ["sh", "-c", 'ulimit -n 400; exec "$@"', "sh", *command],
        env=home.environment, capture_output=True, text=True, check=False,
    )  # fmt: skip
    assert done.returncode == 0, done.stderr
    server = Server(home, port)
    with idle(server, 500):
        with server.client() as client:
            assert client.get("/livez").status_code == 200
        assert upload_after(server) in (200, 503)
    wait_until(lambda: descriptors(server) < 100)
    assert upload_after(server) == 200
    assert "may open 400 files" in home.log()
    assert "Traceback" not in home.log()


def upload_after(server) -> int:
    with server.client() as client:
        return upload(client, jpeg()).status_code
