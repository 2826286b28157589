"""Runs Python code once for each system call by which it writes, with a fault at that call."""

import os
import re
import shutil
import subprocess
import sys
from collections import Counter
from collections.abc import Callable, Iterator
from pathlib import Path

import pytest

WRITING = ("write", "fsync", "rename", "mkdir", "symlink")
FULL = "error=ENOSPC"
KILLED = "signal=KILL"

needs_strace = pytest.mark.skipif(not shutil.which("strace"), reason="strace is not installed")


def faults(code: str, fault: str, work: Path, prepare: Callable[[], object]) -> Iterator[str]:
    """Run `prepare` and `code` once for each call; yield what standard error said each time."""
    prepare()
    done, trace = _traced(code, work)
    assert done.returncode == 0, done.stderr
    # A fault is counted for in each process by itself.
    made = Counter(re.findall(r"^(\d+) +(\w+)\(", trace, re.MULTILINE))
    most = {call: max(n for (_, c), n in made.items() if c == call) for _, call in made}
    assert most, "nothing was written"
    for call, count in most.items():
        for number in range(1, count + 1):
            prepare()
            done, trace = _traced(code, work, f"inject={call}:{fault}:when={number}")
            assert re.search(r"\(INJECTED\)|killed by SIGKILL", trace)
            yield done.stderr


def _traced(code: str, work: Path, *faults: str) -> tuple[subprocess.CompletedProcess, str]:
    log = work / "strace.log"
    options = [part for fault in faults for part in ("-e", fault)]
    done = subprocess.run(
        ["strace", "-f", "-qq", "-o", log, "-e", f"trace={','.join(WRITING)}", *options,
         sys.executable, "-c", code],
        env={**os.environ, "PYTHONDONTWRITEBYTECODE": "1"}, cwd=work,
        capture_output=True, text=True, check=False, timeout=120,
    )  # fmt: skip
    return done, log.read_text(errors="replace")
