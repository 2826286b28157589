"""Progress: a line for a person at a terminal, silence for everything else."""

import fcntl
import os
import pty
import re
import struct
import termios

import pytest
from hub_server import Hub


def seen_on_terminal(run, hub: Hub, **env: str) -> str:
    """What a set-up writes to a terminal on standard error."""
    ours, theirs = pty.openpty()
    fcntl.ioctl(theirs, termios.TIOCSWINSZ, struct.pack("4H", 24, 80, 0, 0))
    plain = {k: v for k, v in os.environ.items() if k not in ("NO_COLOR", "CI")}
    child = run(
        f"import os; os.dup2({theirs}, 2)\nmodule.ensure_models({hub.url!r})",
        pass_fds=[theirs],
        env={**plain, "TERM": "xterm", **env},
    )
    os.close(theirs)
    text = b""
    while True:
        try:
            block = os.read(ours, 65536)
        except OSError:
            break
        if not block:
            break
        text += block
    os.close(ours)
    assert child.wait() == 0
    return text.decode()


def test_a_terminal_sees_one_line_that_is_wiped_at_the_end(run, hub, models):
    text = seen_on_terminal(run, hub)
    assert re.search(r"\r   tiny\.gguf: +\d+%\|.*/2\.86M", text)
    assert re.search(r"\r +\r$", text) and "\n" not in text


@pytest.mark.parametrize("name", [{"NO_COLOR": "1"}, {"CI": "true"}, {"TERM": "dumb"}])
def test_who_wants_it_plain_gets_nothing(run, hub, models, name):
    assert seen_on_terminal(run, hub, **name) == ""


def test_a_pipe_gets_nothing(run, hub, models):
    child = run(f"module.ensure_models({hub.url!r})")
    assert child.communicate() == ("", "")
