"""`zv-anpr FOLDER` with today's engine against a plain loop over an older one, in turn in one run.

Usage: python bench/folder.py ZV_ANPR PYTHON FOLDER OLD [ROUNDS] [COUNT]

OLD is a folder that holds an older package `zelvoran_anpr`; PYTHON has today's. Printed are the
medians of wall and processor seconds with their ratios, and the largest process in MB. With a COUNT
of 1 it is the cold start of a single photo; `taskset -c 0` before it makes it one core.
"""

import os
import resource
import statistics
import subprocess
import sys
import time
from pathlib import Path

from read_loop import LOOP


def measured(command: list[str], environment: dict[str, str]) -> tuple[float, float, float]:
    """Return wall seconds, processor seconds, and the peak memory of the largest process in MB."""
    start = time.perf_counter()
    process = subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL)
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    if process.wait():
        raise SystemExit(f"{command[0]} failed")
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    cpu = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    return time.perf_counter() - start, cpu, after.ru_maxrss / 1024


def main() -> None:
    program, python, folder, old = sys.argv[1:5]
    rounds = int(sys.argv[5]) if len(sys.argv) > 5 else 3
    count = int(sys.argv[6]) if len(sys.argv) > 6 else None
    photos = sorted(str(path.resolve()) for path in Path(folder).glob("*.jpg"))[:count]
    environment = {**os.environ, "ZV_ANPR_PYTHON": python}
    sides = {
        "zv-anpr": ([program, "read", *photos], environment),
        "old loop": ([python, "-c", LOOP, *photos], {**environment, "PYTHONPATH": old}),
    }
    taken = {name: [] for name in sides}
    for _ in range(rounds):
        for name, side in sides.items():
            taken[name].append(measured(*side))
    medians = [[statistics.median(c) for c in zip(*taken[name], strict=True)] for name in sides]
    print(f"{len(photos)} photos, median of {rounds} rounds: wall s, processor s")
    for name, (wall, cpu, _) in zip(sides, medians, strict=True):
        print(f"{name:10}{wall:8.2f}{cpu:8.2f}")
    ratios = [ours / olds for ours, olds in zip(*medians, strict=True)]
    print(f"ratio     {ratios[0]:8.3f}{ratios[1]:8.3f}")
    print(f"peak of the first run of zv-anpr {taken['zv-anpr'][0][2]:.0f} MB")


if __name__ == "__main__":
    main()
