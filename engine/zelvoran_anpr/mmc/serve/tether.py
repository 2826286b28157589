"""Runs a command and ends it as soon as standard input closes, that is, when the owner is gone.

Standalone: started by path with the bare interpreter, so that it is there within milliseconds.
usage: tether.py -- command...
"""

import contextlib
import ctypes
import os
import signal
import subprocess
import sys
import threading

# Seconds between the polite and the hard request to end.
_GRACE_SECONDS = 5


def _die_with_parent() -> None:
    # Linux: should the tether itself be killed hard, the kernel ends the command.
    with contextlib.suppress(OSError, AttributeError):
        ctypes.CDLL(None).prctl(1, signal.SIGKILL)
    if os.getppid() == 1:
        os._exit(1)


def _end(child: subprocess.Popen[bytes]) -> None:
    child.terminate()
    try:
        child.wait(_GRACE_SECONDS)
    except subprocess.TimeoutExpired:
        child.kill()


def _end_when_owner_leaves(child: subprocess.Popen[bytes]) -> None:
    with contextlib.suppress(OSError):
        while os.read(0, 1):
            pass
    _end(child)


def main(command: list[str]) -> int:
    hook = _die_with_parent if sys.platform == "linux" else None
    try:
        # This small process has no threads that could make the hook unsafe.
        child = subprocess.Popen(command, stdin=subprocess.DEVNULL, preexec_fn=hook)  # noqa: PLW1509
    except OSError as error:
        print(f"cannot start {command[0]}: {error.strerror}", file=sys.stderr)
        return 127
    signal.signal(signal.SIGTERM, lambda *_: child.terminate())
    threading.Thread(target=_end_when_owner_leaves, args=(child,), daemon=True).start()
    status = child.wait()
    return status if status >= 0 else 128 - status


if __name__ == "__main__":
    sys.exit(main(sys.argv[2:]))
