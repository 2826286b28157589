"""Ctrl+C on its way to the engine, and signals that our own parent ignores or holds back."""

import os
import signal
import time

import pytest
from hanging_engine import HANG, engine_pid
from processes import alive, wait_until


def test_ctrl_c_from_the_terminal_cancels(zv, car):
    zv.script(HANG.format(hang="time.sleep(60)"))
    process = zv.popen("car.jpg", start_new_session=True)
    pid = engine_pid(zv)
    os.killpg(process.pid, signal.SIGINT)
    out, err = process.communicate(timeout=20)
    assert process.returncode == 1
    assert out.decode().endswith("car.jpg: \nOperation cancelled.\n")
    assert b"Traceback" not in err
    assert not alive(pid)


def test_an_interrupt_that_reaches_only_us_is_passed_on(zv, car):
    zv.script(HANG.format(hang="time.sleep(60)"))
    process = zv.popen("car.jpg")
    pid = engine_pid(zv)
    process.send_signal(signal.SIGINT)
    out, _ = process.communicate(timeout=20)
    assert (process.returncode, out.decode().splitlines()[-1]) == (1, "Operation cancelled.")
    assert not alive(pid)


def test_a_second_ctrl_c_kills_an_engine_that_does_not_listen(zv, car):
    zv.script(
        HANG.format(
            hang="import signal; signal.signal(signal.SIGINT, signal.SIG_IGN)\n"
            "    open('deaf', 'w').close()\n    time.sleep(60)"
        )
    )
    process = zv.popen("car.jpg", start_new_session=True)
    pid = engine_pid(zv)
    wait_until((zv.folder / "deaf").exists)
    os.killpg(process.pid, signal.SIGINT)
    time.sleep(0.5)
    assert process.poll() is None
    os.killpg(process.pid, signal.SIGINT)
    out, _ = process.communicate(timeout=20)
    assert (process.returncode, out.decode().splitlines()[-1]) == (1, "Operation cancelled.")
    assert not alive(pid)


@pytest.mark.parametrize("held", [{signal.SIGCHLD}, set(signal.Signals)])
def test_signals_held_back_by_the_parent_hold_nothing_up(zv, car, held):
    process = zv.popen("car.jpg", preexec_fn=lambda: signal.pthread_sigmask(signal.SIG_BLOCK, held))
    out, err = process.communicate(timeout=60)
    assert (process.returncode, err) == (0, b"")
    assert out.endswith(b"Total: 0 plates from 1 images\n")


def test_an_ignored_interrupt_stays_ignored(zv, car):
    """As `nohup` and the background jobs of scripts are started."""
    zv.script(HANG.format(hang="time.sleep(1)\n    return {}"))
    process = zv.popen(
        "car.jpg",
        preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_IGN),
        start_new_session=True,
    )
    engine_pid(zv)
    os.killpg(process.pid, signal.SIGINT)
    out, err = process.communicate(timeout=60)
    assert (process.returncode, err) == (0, b"")
    assert out.endswith(b"car.jpg: No plates\n\nTotal: 0 plates from 1 images\n")
