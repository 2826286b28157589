"""Stopping servers: the one that is meant, gracefully, and never a stranger."""

import json
import os
import signal
import subprocess
import sys
import time

import pytest
from conftest import jpeg, upload
from processes import wait_until

_TABLE = """
from zelvoran_anpr import zelvoran_anpr_server_daemon as d
d._print_server_table(d.find_all_servers())
"""


def test_of_two_servers_the_one_that_is_meant_is_stopped(home):
    first, second = home.start(), home.start()
    assert [s["port"] for s in home.value("find_all_servers")] == sorted((first.port, second.port))
    listing = subprocess.run(
        [sys.executable, "-c", _TABLE], env=home.environment, text=True, capture_output=True,
        check=True,
    )  # fmt: skip
    assert first.url in listing.stdout
    assert str(second.pid) in listing.stdout
    unclear = home.call("stop_server")
    assert unclear.returncode == 1
    assert "Several servers are running" in unclear.stderr
    assert home.call("stop_server", target_port=first.port).returncode == 0
    assert (first.alive(), second.alive()) == (False, True)
    wrong = home.call("stop_server", target_pid=second.pid, target_port=first.port)
    assert wrong.returncode == 1
    assert second.alive()
    assert home.call("stop_server", target_pid=second.pid).returncode == 0
    assert not second.alive()
    again = home.call("stop_server", stop_all=True)
    assert (again.returncode, again.stdout) == (0, "No ANPR server is running.\n")


def test_stop_all_with_force_kills_a_server_that_cannot_listen(home):
    server = home.start()
    os.kill(server.pid, signal.SIGSTOP)
    assert home.call("stop_server", force=True, stop_all=True).returncode == 0
    assert not server.alive()
    assert home.value("find_all_servers") == []


@pytest.mark.parametrize("field", ["mark", "machine"])
def test_a_process_that_was_given_the_id_of_a_server_is_never_signalled(home, server, spawn, field):
    record = server.home.config_dir / "run" / f"server-{server.pid}.json"
    fields = json.loads(record.read_text())
    stranger = spawn(["sleep", "60"])
    other = "1" if field == "mark" else "another machine"
    run = home.config_dir / "run"
    run.mkdir()
    false = run / f"server-{stranger.pid}.json"
    false.write_text(json.dumps({**fields, "pid": stranger.pid, field: other}))
    assert home.value("find_all_servers") == []
    for target in ({"stop_all": True}, {"target_pid": stranger.pid}, {"target_port": server.port}):
        home.call("stop_server", force=True, **target)
    assert stranger.poll() is None
    assert false.exists() == (field == "machine")  # another machine's record is not ours to clear


def test_a_record_that_is_no_record_is_passed_over(home):
    run = home.config_dir / "run"
    run.mkdir()
    for number, text in enumerate(["", "{", "[]", '{"pid": 1}', "\xff"]):
        (run / f"server-{number}.json").write_bytes(text.encode("latin-1"))
    assert home.value("find_all_servers") == []


def test_stop_waits_for_the_request_under_way(home, tmp_path):
    from concurrent.futures import ThreadPoolExecutor

    from held_engine import Hold

    hold = Hold(tmp_path / "hold")
    hold.let_go("load")
    hold.add_to(home.environment)
    server = home.start()
    with ThreadPoolExecutor(2) as pool:
        answer = pool.submit(lambda: upload(server.client(), jpeg()))
        wait_until(lambda: 'anpr_pool_held{pool="reader"} 1.0' in _metrics(server))
        stopping = pool.submit(home.call, "stop_server")
        time.sleep(0.5)
        assert not stopping.done()
        hold.let_go("read")
        assert answer.result().status_code == 200
        assert stopping.result().returncode == 0


def _metrics(server) -> str:
    return server.client().get("/metrics").text
