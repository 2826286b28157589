"""Runs Python code once for each system call by which it writes, with a fault at that call."""

import os
import re
import shutil
import subprocess
import sys
from collections.abc import Callable, Iterator
from pathlib import Path

import pytest

WRITING = ("write", "fsync", "rename", "chmod", "chown")
FULL = "error=ENOSPC"
KILLED = "signal=KILL"
_LIMIT = 100

needs_strace = pytest.mark.skipif(not shutil.which("strace"), reason="strace is not installed")


def faults(
    code: str, fault: str, work: Path, prepare: Callable[[], object], **environment: str
) -> Iterator[str]:
    """Run `prepare` and `code` again and again; yield standard error after each faulty run."""
    for call in WRITING:
        for number in range(1, _LIMIT):
            prepare()
            hit, errors = _run(code, f"inject={call}:{fault}:when={number}", work, environment)
            if not hit:
                break
            yield errors
        else:
            pytest.fail(f"{call}: no end after {_LIMIT} faults")


def _run(code: str, fault: str, work: Path, environment: dict[str, str]) -> tuple[bool, str]:
    log = work / "strace.log"
    done = subprocess.run(
        ["strace", "-f", "-qq", "-o", log, "-e", f"trace={','.join(WRITING)}", "-e", fault,
         sys.executable, "-c", code],
        env={**os.environ, "PYTHONDONTWRITEBYTECODE": "1", **environment}, cwd=work,
        capture_output=True, text=True, check=False, timeout=120,
    )  # fmt: skip
    hit = bool(re.search(r"\(INJECTED\)|killed by SIGKILL", log.read_text(errors="replace")))
    assert hit or done.returncode == 0, done.stderr
    return hit, done.stderr
