"""The faults that there are for a command, counted on a run without one, and running with one."""

import os
import re
import resource
import signal
import subprocess
import sysconfig
from collections import Counter
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path

from oracle import MISSED, SILENT, TOLD_SO, Judge
from stage import WRITERS, Outcome, Stage, contents

OUTPUT = {
    "openat": ("ENOSPC", "EMFILE", "EIO", "EINTR", "EACCES"),
    "write": ("ENOSPC", "EIO", "EINTR"),
    "fsync": ("EIO", "ENOSPC"),
    "rename": ("EIO", "ENOSPC"),
    "close": ("EIO", "EINTR"),
    "read": ("EIO", "EINTR"),
    "newfstatat": ("EIO", "EACCES"),
    "readlink": ("EIO",),
    "lseek": ("EIO",),
    "fchmod": ("EPERM",),
    "getdents64": ("EIO",),
}
DESCRIPTORS = dict.fromkeys(
    ("pipe", "pipe2", "socketpair", "socket", "eventfd2", "epoll_create1", "timerfd_create",
     "dup2", "fcntl"),
    ("EMFILE", "ENOMEM"),
)  # fmt: skip
PROCESSES = {
    "clone": ("EAGAIN", "ENOMEM"),
    "clone3": ("EAGAIN",),
    "poll": ("EINTR", "ENOMEM"),
    "wait4": ("EINTR",),
    "connect": ("ECONNREFUSED", "ETIMEDOUT", "EINTR"),
    "epoll_wait": ("EINTR",),
    "mmap": ("ENOMEM",),
}
CALLS = {**OUTPUT, **DESCRIPTORS, **PROCESSES}
AIMED_AT = ("openat", "write", "fsync", "rename", "close")
SIGNALS = ("TERM", "HUP", "INT", "KILL")
SIZES = (*range(0, 4096, 700), *range(4096, 80_000, 4000))
PAGE = 4  # kilobytes
PAGES = range(9, 49, 2)
ADDRESS_SPACE = range(4, 132, 3)
KINDS = ("call", "signal", "allocation", "limit", "disk")


@dataclass(frozen=True)
class Fault:
    """`what` is all that tells it from others of its kind, in words that its kind understands."""

    kind: str
    command: str
    what: str


def thinned(items: list, most: int) -> list:
    """At most so many, evenly spread, the first and the last among them."""
    if len(items) <= most:
        return items
    return [items[i * (len(items) - 1) // max(most - 1, 1)] for i in range(most)]


class Torturer:
    """One command on its stage, and every fault there is for it."""

    def __init__(self, stage: Stage, shim: Path) -> None:
        self.stage = stage
        self._shim = shim
        self.judge = Judge(stage.run(), contents(stage.old))

    def faults(self, kind: str, most: int) -> list[Fault]:
        """At most so many for each call, signal, way to fail or limit."""
        whats = {"call": self._calls, "signal": self._signals, "allocation": self._allocations,
                 "limit": self._limits, "disk": self._disks}[kind](most)  # fmt: skip
        return [Fault(kind, self.stage.name, what) for what in whats]

    def verdicts(self, fault: Fault) -> tuple[list[str], Outcome]:
        run, sent = getattr(self, f"_run_{fault.kind}")(fault.what)
        if fault.kind in ("call", "signal") and not self._reached(sent):
            return [MISSED], run
        verdicts = self.judge.verdicts(run, sent)
        mute = fault.what.startswith("write:") and verdicts == [SILENT] and run.status
        # Where the words themselves cannot be written the status is all that is left.
        return [TOLD_SO] if mute else verdicts, run

    def _reached(self, sent: int) -> bool:
        """Not every run makes exactly as many calls."""
        trace = self.stage.trace.read_text(errors="replace")
        return ("SIG" if sent else "(INJECTED)") in trace

    def _counted(self) -> dict[str, list[int]]:
        """The numbers of all system calls by name, those of the loader left out.

        Of the calls of close only those of files count: a call that is made to fail is not made at
        all, and a pipe that stays open for ever is no fault that any system has. Of a font that
        cannot be read nobody hears: the next one takes its place.
        """
        self.stage.run(["strace", "-y", "-o", self.stage.trace])
        made: Counter = Counter()
        numbers: dict[str, list[int]] = {}
        for line in self.stage.trace.read_text(errors="replace").splitlines():
            call = line.partition("(")[0]
            made[call] += 1
            if "RLIMIT_STACK" in line:
                numbers.clear()
            if "/fonts/" not in line and (call != "close" or "</" in line):
                numbers.setdefault(call, []).append(made[call])
        return numbers

    def _calls(self, most: int) -> Iterator[str]:
        numbers = self._counted()
        for call, errors in CALLS.items():
            for number in thinned(numbers.get(call, []), most):
                for error in errors:
                    yield f"{call}:error={error}:when={number}"

    def _signals(self, most: int) -> Iterator[str]:
        numbers = self._counted()
        for call in AIMED_AT:
            for number in thinned(numbers.get(call, []), most):
                for name in SIGNALS:
                    yield f"{call}:signal={name}:when={number}"

    def allocations(self) -> int:
        """How many a good run makes."""
        report = self.stage.trace
        self.stage.run(env={"LD_PRELOAD": str(self._shim), "FAIL_REPORT": str(report)})
        return int(report.read_text())

    def _allocations(self, most: int) -> Iterator[str]:
        numbers = list(range(1, self.allocations() + 1))
        for count in (1, 0):
            yield from (f"{number}:{count}" for number in thinned(numbers, 4 * most))

    def _limits(self, most: int) -> Iterator[str]:
        sizes = SIZES if self.stage.name in WRITERS else ()
        for name, values in (
            ("FSIZE", sizes), ("NOFILE", range(3, 28)), ("AS", [n << 20 for n in ADDRESS_SPACE]),
            ("NPROC", range(4)),
        ):  # fmt: skip
            for value in thinned(list(values), 2 * most):
                yield f"{name}:{value}"

    def _disks(self, most: int) -> Iterator[str]:
        if self.stage.name in WRITERS:
            yield from (str(PAGE * pages) for pages in thinned(list(PAGES), 2 * most))

    def _run_call(self, what: str) -> tuple[Outcome, int]:
        return self.stage.run(self._strace(what)), 0

    def _run_signal(self, what: str) -> tuple[Outcome, int]:
        name = re.findall(r"signal=(\w+)", what)[0]
        return self.stage.run(self._strace(what)), signal.Signals[f"SIG{name}"]

    def _strace(self, what: str) -> list[str]:
        call = what.partition(":")[0]
        trace = os.fspath(self.stage.trace)
        return ["strace", "-o", trace, "-e", f"trace={call}", "-e", f"inject={what}"]

    def _run_allocation(self, what: str) -> tuple[Outcome, int]:
        at, count = what.split(":")
        env = {"LD_PRELOAD": str(self._shim), "FAIL_AT": at, "FAIL_COUNT": count}
        return self.stage.run(env=env), 0

    def _run_limit(self, what: str) -> tuple[Outcome, int]:
        name, value = what.split(":")
        limit = getattr(resource, f"RLIMIT_{name}")

        def prepare() -> None:
            resource.setrlimit(limit, (int(value), int(value)))
            if name == "NPROC" and os.geteuid() == 0:
                os.setgroups([])
                os.setuid(NOBODY)  # root may have as many as it likes

        return self.stage.run(prepare=prepare), 0

    def _run_disk(self, what: str) -> tuple[Outcome, int]:
        folders = [self.stage.out, self.stage.old, self.stage.after]
        return self.stage.run(["unshare", "-m", "sh", "-c", ON_A_SMALL_DISK, what, *folders]), 0


NOBODY = 64_999
ON_A_SMALL_DISK = """
out=$1 old=$2 after=$3; shift 3
mount -t tmpfs -o "size=${0}k" none "$out" && cp -a "$old/." "$out" || exit 99
"$@"; status=$?
cp -a "$out/." "$after"
exit $status
"""


def build_shim(folder: Path) -> Path:
    """Compile what makes allocations fail."""
    source, library = Path(__file__).with_name("failing_memory.c"), folder / "failing_memory.so"
    compiler = os.environ.get("CC") or (sysconfig.get_config_var("CC") or "cc").split()[0]
    subprocess.run([compiler, "-shared", "-fPIC", "-O1", "-o", library, source], check=True)
    return library


def disks_can_be_mounted() -> bool:
    command = ["unshare", "-m", "mount", "-t", "tmpfs", "none", "/mnt"]
    try:
        return subprocess.run(command, capture_output=True, check=False).returncode == 0
    except FileNotFoundError:
        return False
