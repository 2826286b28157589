"""Compares two versions of the engine on the same photos, turn by turn in one run.

Usage: python bench/engines.py PHOTOS OLD NEW [--rounds N] [--detector-model M] [--ocr-model M]

PHOTOS is a folder of photos; OLD and NEW are folders that hold a package `zelvoran_anpr`. Every
round starts a fresh process per version and model pair, which reports in milliseconds its cold
start (import, sessions, first photo) and the median photo, and in MB its peak memory.
"""

import argparse
import json
import os
import statistics
import subprocess
import sys
from pathlib import Path

CHILD = """
import json, resource, statistics, sys, time
start = time.perf_counter()
from zelvoran_anpr import zelvoran_anpr_from_image_file, zv_anpr_detector_v17, zv_anpr_ocr_v17
detector = zv_anpr_detector_v17(sys.argv[1], backend="cpu")
ocr = zv_anpr_ocr_v17(sys.argv[2], "univ", backend="cpu")
zelvoran_anpr_from_image_file(detector, ocr, sys.argv[3])
cold = time.perf_counter() - start
times = []
for photo in sys.argv[3:]:
    begin = time.perf_counter()
    zelvoran_anpr_from_image_file(detector, ocr, photo)
    times.append(time.perf_counter() - begin)
peak = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024
print(json.dumps([1000 * cold, 1000 * statistics.median(times), peak]))
"""


def main() -> None:
    options = parse_options()
    photos = sorted(
        str(p) for p in options.photos.rglob("*") if p.suffix.lower() in (".jpg", ".png")
    )
    figures = {"old": [], "new": []}
    for _ in range(options.rounds):
        for name, folder in (("old", options.old), ("new", options.new)):
            figures[name].append(measured(folder, options, photos))
    print("| engine | cold start ms | ms/photo | peak MB |\n|---|---:|---:|---:|")
    medians = {name: medians_of(rounds) for name, rounds in figures.items()}
    for name, values in medians.items():
        print(f"| {name} |", " | ".join(f"{value:.0f}" for value in values), "|")
    ratios = [new / old for new, old in zip(medians["new"], medians["old"], strict=True)]
    print("| new/old |", " | ".join(f"{ratio:.3f}" for ratio in ratios), "|")


def parse_options() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("photos", type=Path)
    parser.add_argument("old", type=Path)
    parser.add_argument("new", type=Path)
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--detector-model", default="640p_fp32")
    parser.add_argument("--ocr-model", default="fp32")
    return parser.parse_args()


def measured(folder: Path, options: argparse.Namespace, photos: list[str]) -> list[float]:
    command = [sys.executable, "-c", CHILD, options.detector_model, options.ocr_model, *photos]
    environment = {**os.environ, "PYTHONPATH": str(folder)}
    done = subprocess.run(command, env=environment, check=True, capture_output=True, text=True)
    return json.loads(done.stdout.splitlines()[-1])


def medians_of(rounds: list[list[float]]) -> list[float]:
    return [statistics.median(values) for values in zip(*rounds, strict=True)]


if __name__ == "__main__":
    main()
