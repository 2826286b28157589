"""Engines that crash, exit, hang up or do not end: what is told; nothing is left behind."""

import signal
import sys

import pytest
from hanging_engine import HANG, engine_pid
from processes import alive, wait_until


@pytest.mark.parametrize(
    "crash, told",
    [
        ("os._exit(3)", "exit status 3"),
        ("os.kill(os.getpid(), 9)", "signal 9"),
        ("os.abort()", "signal 6"),
    ],
)
def test_an_engine_that_dies_is_told_with_its_state(zv, car, crash, told):
    zv.script(f"import os\ndef answer(path):\n    {crash}\n")
    _, out, err = zv("car.jpg")
    assert f"car.jpg: Error: the engine process {sys.executable} ended ({told})" in out
    assert out.endswith("Total: 0 plates from 1 images\n")
    assert "Traceback" not in out + err


def test_images_after_a_crash_of_the_engine_are_still_read(zv, car):
    (zv.folder / "b.jpg").touch()
    zv.script("import os\ndef answer(path):\n    if 'car' in path: os._exit(3)\n    return {}\n")
    out = zv("car.jpg", "b.jpg").out
    assert "car.jpg: Error: the engine process" in out
    assert "\nb.jpg: No plates\n" in out


def test_an_engine_that_ends_the_process_passes_its_status_on(zv, car):
    zv.script("import sys\ndef answer(path):\n    sys.exit(7)\n")
    assert zv("car.jpg").status == 7


@pytest.mark.parametrize(
    "code, status, told",
    [("None", 0, ""), ("False", 0, ""), ("True", 1, ""), ("'bye'", 1, "bye\n"),
     ("(1, 2)", 1, "(1, 2)\n")],
)  # fmt: skip
def test_an_engine_may_end_the_process_with_what_is_no_number(zv, car, code, status, told):
    zv.script(f"import sys\ndef answer(path):\n    sys.exit({code})\n")
    assert (zv("car.jpg").status, zv("car.jpg").err) == (status, told)


@pytest.mark.parametrize("number", [signal.SIGKILL, signal.SIGTERM])
def test_no_engine_stays_behind_when_we_are_killed(zv, car, number):
    zv.script(HANG.format(hang="time.sleep(60)"))
    process = zv.popen("car.jpg")
    pid = engine_pid(zv)
    process.send_signal(number)
    process.communicate(timeout=20)
    wait_until(lambda: not alive(pid), 10)


def test_no_engine_that_is_still_loading_stays_behind(zv):
    zv.engine_file("__init__.py", HANG.format(hang="time.sleep(60)") + "answer('')\n")
    process = zv.popen("version")
    pid = engine_pid(zv)
    process.kill()
    process.communicate(timeout=20)
    wait_until(lambda: not alive(pid), 10)


def test_an_engine_that_hangs_up_and_lives_is_ended_and_replaced(zv, car):
    (zv.folder / "b.jpg").touch()
    zv.script(
        HANG.format(hang="")
        + "    if 'b.jpg' not in path:\n        os.close(4)\n        time.sleep(60)\n"
        + "    return {}\n"
    )
    out = zv("car.jpg", "b.jpg").out
    told = f"the engine process {sys.executable} closed its pipe before it answered"
    assert f"car.jpg: Error: {told}\n" in out
    assert "\nb.jpg: No plates\n" in out
    assert not alive(engine_pid(zv))


HELLO = (
    r"""printf '{"protocol": 1, "executable": {"$bytes": "2f"}, "version": "1","""
    r""" "names": [1, 2, 3, 4, 5, 6]}\n' >&4"""
)


def fake_engine(zv, *lines):
    """An interpreter that is none."""
    path = zv.folder / "fake"
    path.write_text("\n".join(["#!/bin/sh", *lines]) + "\n")
    path.chmod(0o755)
    return {"ZV_ANPR_PYTHON": str(path)}


@pytest.mark.parametrize(
    ("lines", "told"),
    [
        (["exec 4>&-", "exec sleep 60"], "closed its pipe before it answered"),
        (["sleep 60 <&- >&- 2>&- 3<&- &", "exit 3"], "ended (exit status 3) before it answered"),
    ],
)
def test_an_engine_that_never_says_hello(zv, lines, told):
    status, out, err = zv("version", env=fake_engine(zv, *lines))
    assert (status, out) == (1, "")
    assert told in err


def test_an_engine_that_takes_no_requests(zv, car):
    env = fake_engine(zv, HELLO, "exec 3<&-", "exec sleep 60")
    assert "closed its pipe before it answered\n" in zv("car.jpg", env=env).out


def test_an_engine_that_does_not_end_is_ended(zv):
    env = fake_engine(zv, "trap '' TERM INT", "echo $$ > pid", HELLO, "exec sleep 60")
    assert tuple(zv("version", env=env)) == (0, "Zelvoran ANPR CLI v1\n", "")
    assert not alive(engine_pid(zv))
