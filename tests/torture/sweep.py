"""Runs all faults there are and keeps a record of each; a record that is there is not made again.

sweep.py RECORDS [PART/PARTS]: the part's faults.  sweep.py RECORDS --report: the counts.
RECORDS is a folder. ZV_TORTURE_MOST limits the faults for each call, signal and limit (24). The
path of modules is scripts/torture.sh's business.
"""

import contextlib
import json
import os
import shutil
import sys
import tempfile
from collections import Counter, defaultdict
from collections.abc import Iterator
from dataclasses import asdict
from pathlib import Path

from faults import KINDS, Fault, Torturer, build_shim, disks_can_be_mounted
from oracle import MISSED, RIGHT, TOLD_SO, WRONG
from stage import COMMANDS, Outcome, Stage

MOST = int(os.environ.get("ZV_TORTURE_MOST", "24"))


def records(folder: Path) -> Iterator[dict]:
    for file in sorted(folder.glob("*.jsonl")):
        for line in file.read_text().splitlines():
            with contextlib.suppress(json.JSONDecodeError):  # cut off in the middle
                yield json.loads(line)


def sweep(folder: Path, part: int, parts: int) -> None:
    folder.mkdir(parents=True, exist_ok=True)
    done = {(r["kind"], r["command"], r["what"]) for r in records(folder)}
    scratch = Path(tempfile.mkdtemp(prefix="torture-"))
    scratch.chmod(0o755)
    shim = build_shim(scratch)
    kinds = [kind for kind in KINDS if kind != "disk" or disks_can_be_mounted()]
    with (folder / f"{part}.jsonl").open("a") as log:
        for name in list(COMMANDS)[part::parts]:
            torturer = Torturer(Stage(scratch / name, name), shim)
            for kind in kinds:
                for fault in torturer.faults(kind, MOST):
                    if (kind, name, fault.what) not in done:
                        log.write(record(fault, *torturer.verdicts(fault)))
                        log.flush()
    shutil.rmtree(scratch)


def record(fault: Fault, verdicts: list[str], run: Outcome) -> str:
    bad = set(verdicts) & set(WRONG)
    details = {"status": run.status, "text": run.text[-600:], "running": run.running} if bad else {}
    return json.dumps({**asdict(fault), "verdicts": verdicts, **details}) + "\n"


def report(folder: Path) -> int:
    """Print the counts; the status is 1 when anything went wrong."""
    counts: dict[str, Counter] = defaultdict(Counter)
    for entry in records(folder):
        for kind in (entry["kind"], "all"):
            counts[kind].update(["faults", *entry["verdicts"]])
        if set(entry["verdicts"]) & set(WRONG):
            print(json.dumps(entry, ensure_ascii=False))
    columns = ("faults", RIGHT, TOLD_SO, MISSED, *WRONG)
    print("| kind | " + " | ".join(columns) + " |")
    print("|---" * (len(columns) + 1) + "|")
    for kind, count in counts.items():
        print(f"| {kind} | " + " | ".join(str(count[column]) for column in columns) + " |")
    return 1 if any(counts["all"][wrong] for wrong in WRONG) else 0


if __name__ == "__main__":
    if sys.argv[2:] == ["--report"]:
        sys.exit(report(Path(sys.argv[1])))
    number, _, total = (sys.argv[2] if sys.argv[2:] else "1/1").partition("/")
    sweep(Path(sys.argv[1]), int(number) - 1, int(total))
