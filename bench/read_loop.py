"""What the program adds to reading photos: `zv-anpr FOLDER` against a bare loop over the engine.

Both read the same photos in one process with engine objects built once; runs alternate and the
ratio of the medians is printed. Usage: read_loop.py ZV_ANPR PYTHON FOLDER [COUNT] [ROUNDS]
"""

import os
import statistics
import subprocess
import sys
import time
from pathlib import Path

LOOP = """
import sys
from zelvoran_anpr import (
    zelvoran_anpr_from_image_file, zv_anpr_detector_v17, zv_anpr_ocr_v17,
)
from zelvoran_anpr.region_aliases import to_internal_region
detector = zv_anpr_detector_v17("640p_fp32", backend="cpu")
ocr = zv_anpr_ocr_v17("fp32", to_internal_region("univ"), backend="cpu")
for path in sys.argv[1:]:
    print(path, zelvoran_anpr_from_image_file(detector, ocr, path))
"""


def seconds(command: list[str], environment: dict[str, str]) -> float:
    start = time.perf_counter()
    subprocess.run(command, env=environment, stdout=subprocess.DEVNULL, check=True)
    return time.perf_counter() - start


def main() -> None:
    program, python, folder = sys.argv[1:4]
    count = int(sys.argv[4]) if len(sys.argv) > 4 else 60
    rounds = int(sys.argv[5]) if len(sys.argv) > 5 else 3
    photos = sorted(str(path.resolve()) for path in Path(folder).glob("*.jpg"))[:count]
    environment = {**os.environ, "ZV_ANPR_PYTHON": python}
    ours, bare = [program, "read", *photos], [python, "-c", LOOP, *photos]
    pairs = [(seconds(ours, environment), seconds(bare, environment)) for _ in range(rounds)]
    a, b = (statistics.median(column) for column in zip(*pairs, strict=True))
    print(f"{len(photos)} photos, median of {rounds} runs each")
    print(f"zv-anpr     {a:7.2f} s")
    print(f"bare loop   {b:7.2f} s")
    print(f"ratio       {a / b:7.3f}")


if __name__ == "__main__":
    main()
