"""`server logs`."""

import os
import signal
import time

import pytest
from processes import alive


@pytest.fixture
def log(zv):
    path = zv.home / ".zelvoran" / "logs" / "server.log"
    path.parent.mkdir(parents=True)
    return path


@pytest.mark.parametrize("words", [(), ("-n", "5"), ("--follow",)])
def test_no_log(zv, words):
    assert tuple(zv("server", "logs", *words)) == (0, "No log file found\n", "")


@pytest.mark.parametrize("words", [(), ("--follow",)])
def test_a_log_that_cannot_be_looked_at_is_no_missing_one(zv, words):
    folder = zv.home / ".zelvoran"
    folder.mkdir()
    (folder / "logs").symlink_to("logs")
    path = folder / "logs" / "server.log"
    told = f"Error: [Errno 40] Too many levels of symbolic links: '{path}'\n"
    assert tuple(zv("server", "logs", *words)) == (1, told, "")


@pytest.mark.parametrize(
    ("count", "lines"),
    [("5", "a\nb\nc\n"), ("3", "a\nb\nc\n"), ("2", "b\nc\n"), ("0", ""), ("9" * 30, "a\nb\nc\n")],
)
def test_the_last_lines(zv, log, count, lines):
    log.write_text("a\nb\nc\n")
    assert zv("server", "logs", "-n", count).out == lines


def test_fifty_lines_unless_told(zv, log):
    log.write_text("".join(f"{i}\n" for i in range(60)))
    assert zv("server", "logs").out == "".join(f"{i}\n" for i in range(10, 60))


def test_the_log_is_read_as_text(zv, log):
    log.write_bytes(b"one\r\ntw\xff\xc3\xbc\n\nlast without end")
    assert zv("server", "logs").out == "one\ntw\ufffd\u00fc\n\nlast without end\n"


def test_an_empty_log_prints_nothing(zv, log):
    log.write_bytes(b"")
    assert zv("server", "logs").out == ""


def next_line(process):
    return process.stdout.readline().decode()


def stop(process):
    process.send_signal(signal.SIGINT)
    out, err = process.communicate(timeout=30)
    return process.returncode, out, err


def follow(zv, **env):
    return zv.popen("server", "logs", "-f", env=env)


def append(log, text):
    with log.open("a") as file:
        file.write(text)


@pytest.fixture(params=["tail", "own follower"])
def follower(request, zv, tmp_path):
    """Environment in which following goes one way or the other."""
    empty = tmp_path / "empty"
    empty.mkdir()
    return {} if request.param == "tail" else {"PATH": str(empty)}


def test_follow_shows_what_comes_and_ends_quietly(zv, log, follower):
    log.write_text("".join(f"{i}\n" for i in range(15)))
    process = follow(zv, **follower)
    assert [next_line(process) for _ in range(10)] == [f"{i}\n" for i in range(5, 15)]
    append(log, "new\n")
    assert next_line(process) == "new\n"
    assert stop(process) == (0, b"", b"")


def test_follow_goes_on_after_the_log_was_emptied_in_place(zv, log, follower):
    log.write_text("a rather long line before the rotation\n")
    process = follow(zv, **follower)
    next_line(process)
    os.truncate(log, 0)
    time.sleep(0.5)  # tail looks once a second at most where there is no notification
    append(log, "after\n")
    assert next_line(process) == "after\n"
    status, out, _ = stop(process)
    assert (status, out) == (0, b"")


@pytest.fixture
def scripted_tail(tmp_path):
    """Makes a script be the `tail` that is found; the environment that does so."""

    def make(script):
        tail = tmp_path / "tools" / "tail"
        tail.parent.mkdir()
        tail.write_text(f"#!/bin/sh\n{script}\n")
        tail.chmod(0o755)
        return {"PATH": f"{tail.parent}:{os.environ['PATH']}"}

    return make


def test_follow_runs_tail_on_the_log(zv, log, scripted_tail):
    log.write_text("x\n")
    env = scripted_tail('printf "%s|" "$#" "$@"')
    result = zv("server", "logs", "--follow", env=env)
    assert tuple(result) == (0, f"2|-f|{log}|", "")


def gone(pid):
    end = time.monotonic() + 20
    while alive(pid) and time.monotonic() < end:
        time.sleep(0.02)
    return not alive(pid)


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGHUP, signal.SIGKILL])
def test_tail_does_not_outlive_the_program(zv, log, scripted_tail, number):
    log.write_text("x\n")
    process = follow(zv, **scripted_tail("echo $$; exec sleep 60"))
    tail = int(next_line(process))
    process.send_signal(number)
    assert process.wait(30) == -number
    try:
        assert gone(tail)
    finally:
        if alive(tail):
            os.kill(tail, signal.SIGKILL)


def test_what_nohup_started_goes_on_when_the_terminal_is_closed(zv, log, scripted_tail):
    log.write_text("x\n")
    process = zv.popen(
        "server", "logs", "-f", env=scripted_tail("echo $$; exec sleep 60"),
        preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN), start_new_session=True,
    )  # fmt: skip
    tail = int(next_line(process))
    os.killpg(process.pid, signal.SIGHUP)
    time.sleep(0.3)
    assert (process.poll(), alive(tail)) == (None, True)
    process.kill()
    assert gone(tail)


def test_ctrl_c_of_the_whole_terminal_ends_follow_quietly(zv, log):
    log.write_text("x\n")
    process = zv.popen("server", "logs", "-f", start_new_session=True)
    next_line(process)
    os.killpg(process.pid, signal.SIGINT)
    out, err = process.communicate(timeout=30)
    assert (process.returncode, out, err) == (0, b"", b"")
