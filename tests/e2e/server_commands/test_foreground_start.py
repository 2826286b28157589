"""`server start` in the foreground: how it ends with the terminal and with its program."""

import os
import signal
import subprocess

import pytest


def test_a_start_in_the_foreground_ends_on_ctrl_c(zv):
    zv.server_script(
        "\ndef start_server(**keywords):\n    import time\n"
        "    print('serving', flush=True)\n    time.sleep(60)\n"
    )
    process = zv.popen("server", "start", start_new_session=True)
    assert process.stdout.readline() == b"serving\n"
    subprocess.run(["kill", "-INT", "--", f"-{process.pid}"], check=True)
    out, _ = process.communicate(timeout=30)
    assert (process.returncode, out.decode()) == (1, "\nOperation cancelled.\n")


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGHUP, signal.SIGKILL])
def test_a_server_whose_program_was_ended_ends_without_a_word(zv, number):
    zv.server_script(
        "\nimport signal, time\n\ndef start_server(**keywords):\n    told = []\n"
        "    signal.signal(signal.SIGTERM, lambda *_: told.append(1))\n"
        "    print('serving', flush=True)\n"
        "    while not told:\n        time.sleep(0.02)\n"
    )
    process = zv.popen("server", "start")
    assert process.stdout.readline() == b"serving\n"
    process.send_signal(number)
    out, err = process.communicate(timeout=30)  # the end of both: the server is gone as well
    assert (process.returncode, out, err) == (-number, b"", b"")


def test_a_server_that_nohup_started_outlives_the_terminal(zv):
    zv.server_script(
        "\nimport os, time\n\ndef start_server(**keywords):\n"
        "    print('serving', flush=True)\n"
        "    while not os.path.exists('stop'):\n        time.sleep(0.02)\n"
        "    print('stopped')\n"
    )
    process = zv.popen(
        "server", "start", start_new_session=True,
        preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN),
    )  # fmt: skip
    assert process.stdout.readline() == b"serving\n"
    os.killpg(process.pid, signal.SIGHUP)
    (zv.folder / "stop").touch()
    out, err = process.communicate(timeout=30)
    assert (process.returncode, out, err) == (0, b"stopped\n", b"")
