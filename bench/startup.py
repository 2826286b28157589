"""How much the shortest command costs over the interpreter it must start.

Runs `zv-anpr version` and `python -c "import zelvoran_anpr._version"` of one environment in turn
and prints the ratio of the medians. Usage: startup.py ZV_ANPR PYTHON [ROUNDS]
"""

import os
import resource
import statistics
import subprocess
import sys
import time


def seconds(command: list[str], environment: dict[str, str]) -> float:
    start = time.perf_counter()
    subprocess.run(command, env=environment, stdout=subprocess.DEVNULL, check=True)
    return time.perf_counter() - start


def main() -> None:
    program, python = sys.argv[1:3]
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 100
    environment = {**os.environ, "ZV_ANPR_PYTHON": python}
    ours, bare = [program, "version"], [python, "-c", "import zelvoran_anpr._version"]
    seconds(ours, environment)
    seconds(bare, environment)
    pairs = [(seconds(ours, environment), seconds(bare, environment)) for _ in range(rounds)]
    a, b = (statistics.median(column) for column in zip(*pairs, strict=True))
    print(f"zv-anpr version  {a * 1000:6.1f} ms (median of {rounds})")
    print(f"bare import      {b * 1000:6.1f} ms")
    print(f"ratio            {a / b:6.2f}")
    peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss / 1024
    print(f"peak memory of the largest process {peak:.1f} MiB")


if __name__ == "__main__":
    main()
