"""Measures the engine on a folder of labelled photos and prints a Markdown table.

Usage: python bench/accuracy.py PHOTOS [--detector-model NAME] [--ocr-model NAME]
       [--region REGION] [--sets eu,us] [--misses]
       python bench/accuracy.py --plain FOLDER [--detector-model NAME] ...

PHOTOS holds photos in one folder per set, and plates.csv with the columns
file,x,y,width,height,text (pixels; one row per labelled plate). Without the columns of a box the
whole picture is the plate. ECE is the expected calibration error of the confidences, ten bins.
FOLDER holds pictures without plates: counted is what is found on them all the same.
"""

import argparse
import csv
import statistics
import time
from collections import defaultdict
from collections.abc import Sequence
from dataclasses import dataclass, field
from pathlib import Path

from zelvoran_anpr import zelvoran_anpr_from_image_file, zv_anpr_detector_v17, zv_anpr_ocr_v17

MIN_IOU = 0.4  # the labels' boxes have a fixed aspect, so they sit loosely on the plates
SUFFIXES = (".jpg", ".jpeg", ".png", ".bmp", ".tif", ".tiff")
FOLDED = str.maketrans("OI", "01")  # letters that many plates print like digits


@dataclass
class Label:
    box: tuple[float, float, float, float] | None  # None: the whole picture
    text: str


@dataclass
class Tally:
    plates: int = 0
    found: int = 0
    strict: int = 0
    folded: int = 0
    false: int = 0
    times: list[float] = field(default_factory=list)  # ms of wall clock
    cpu_times: list[float] = field(default_factory=list)  # ms, summed over the threads
    misses: list[str] = field(default_factory=list)
    said: list[tuple[float, bool]] = field(default_factory=list)  # confidence, and whether right


def main() -> None:
    options = parse_options()
    detector = zv_anpr_detector_v17(options.detector_model, backend=options.backend)
    ocr = zv_anpr_ocr_v17(options.ocr_model, options.region, backend=options.backend)
    if options.plain:
        print_false_plates(detector, ocr, options.plain)
    if options.photos:
        print_accuracy(detector, ocr, options)


def print_accuracy(
    detector: zv_anpr_detector_v17, ocr: zv_anpr_ocr_v17, options: argparse.Namespace
) -> None:
    labels = read_labels(options.photos / "plates.csv", options.sets)
    warm_up(detector, ocr, options.photos / next(iter(labels)))
    tallies: dict[str, Tally] = defaultdict(Tally)
    for file, expected in labels.items():
        subset = file.split("/")[0] if "/" in file else options.photos.name
        measure(detector, ocr, options.photos / file, expected, tallies[subset])
    print_table(tallies)
    if options.misses:
        print_misses(tallies)


def print_false_plates(detector: zv_anpr_detector_v17, ocr: zv_anpr_ocr_v17, folder: Path) -> None:
    files = sorted(file for file in folder.rglob("*") if file.suffix.lower() in SUFFIXES)
    found = []
    for file in files:
        results = zelvoran_anpr_from_image_file(detector, ocr, str(file))["results"]
        found += [min(result["ocr_conf"], result["ltrb_conf"]) for result in results]
    print(f"{len(files)} pictures without plates: {len(found) / len(files):.3f} results each,")
    print(f"{sum(sure > 0.5 for sure in found)} of them with both confidences above 0.5")


def parse_options() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("photos", type=Path, nargs="?", help="folder with plates.csv")
    parser.add_argument("--plain", type=Path, help="folder of pictures without plates")
    parser.add_argument("--detector-model", default="640p_fp32")
    parser.add_argument("--ocr-model", default="fp32")
    parser.add_argument("--region", default="univ")
    parser.add_argument("--backend", default="cpu")
    parser.add_argument("--sets", help="comma-separated folders, default: all")
    parser.add_argument("--misses", action="store_true", help="list what was read wrongly")
    return parser.parse_args()


def read_labels(path: Path, sets: str | None) -> dict[str, list[Label]]:
    chosen = set(sets.split(",")) if sets else None
    labels: dict[str, list[Label]] = defaultdict(list)
    with open(path, encoding="utf-8", newline="") as file:
        for row in csv.DictReader(file):
            if chosen is None or row["file"].split("/")[0] in chosen:
                labels[row["file"]].append(Label(box_of(row), row["text"]))
    return labels


def box_of(row: dict[str, str]) -> tuple[float, float, float, float] | None:
    if "x" not in row:
        return None
    x, y, w, h = (float(row[key]) for key in ("x", "y", "width", "height"))
    return x, y, x + w, y + h


def warm_up(detector: zv_anpr_detector_v17, ocr: zv_anpr_ocr_v17, photo: Path) -> None:
    zelvoran_anpr_from_image_file(detector, ocr, str(photo))


def measure(
    detector: zv_anpr_detector_v17,
    ocr: zv_anpr_ocr_v17,
    photo: Path,
    expected: list[Label],
    tally: Tally,
) -> None:
    start, cpu_start = time.perf_counter(), time.process_time()
    results = zelvoran_anpr_from_image_file(detector, ocr, str(photo))["results"]
    tally.times.append((time.perf_counter() - start) * 1000)
    tally.cpu_times.append((time.process_time() - cpu_start) * 1000)
    left = list(results)
    for label in expected:
        tally.plates += 1
        best = max(left, key=lambda result: overlap(result["ltrb"], label.box), default=None)
        if best is None or overlap(best["ltrb"], label.box) <= MIN_IOU:
            tally.misses.append(f"{photo.name}: {label.text} not found")
            continue
        left.remove(best)
        count(tally, best, label, photo.name)
    for result in left:
        tally.misses.append(f"{photo.name}: unlabelled {result['ocr']} {result['ocr_conf']:.2f}")
    tally.false += len(left)


def count(tally: Tally, result: dict, label: Label, name: str) -> None:
    tally.found += 1
    tally.strict += result["ocr"] == label.text
    right = result["ocr"].translate(FOLDED) == label.text.translate(FOLDED)
    tally.said.append((result["ocr_conf"], right))
    if right:
        tally.folded += 1
    else:
        tally.misses.append(f"{name}: {label.text} read {result['ocr']} {result['ocr_conf']:.2f}")


def overlap(found: Sequence[float], label: Sequence[float] | None) -> float:
    """Return the intersection over union; 1 where the whole picture is the plate."""
    return 1.0 if label is None else iou(found, label)


def calibration_error(said: list[tuple[float, bool]]) -> float:
    bins: dict[int, list[tuple[float, bool]]] = defaultdict(list)
    for sure, right in said:
        bins[min(int(sure * 10), 9)].append((sure, right))
    gaps = (abs(sum(sure - right for sure, right in one)) for one in bins.values())
    return sum(gaps) / max(len(said), 1)


def iou(a: Sequence[float], b: Sequence[float]) -> float:
    width = min(a[2], b[2]) - max(a[0], b[0])
    height = min(a[3], b[3]) - max(a[1], b[1])
    if width <= 0 or height <= 0:
        return 0.0
    areas = sum((box[2] - box[0]) * (box[3] - box[1]) for box in (a, b))
    return width * height / (areas - width * height)


def print_table(tallies: dict[str, Tally]) -> None:
    columns = ("strict", "O=0 I=1", "found", "ECE", "unlabelled/photo", "ms/photo", "CPU ms/photo")
    print("| set | photos |", " | ".join(columns), "|")
    print("|---|" + "---:|" * (1 + len(columns)))
    for name, t in sorted(tallies.items()):
        cells = [f"{100 * n / t.plates:.1f} %" for n in (t.strict, t.folded, t.found)]
        cells += [f"{calibration_error(t.said):.3f}", f"{t.false / len(t.times):.2f}"]
        cells += [f"{statistics.median(times):.0f}" for times in (t.times, t.cpu_times)]
        print(f"| {name} | {len(t.times)} |", " | ".join(cells), "|")


def print_misses(tallies: dict[str, Tally]) -> None:
    for name, tally in sorted(tallies.items()):
        print(f"\n{name}:")
        for miss in tally.misses:
            print(f"  {miss}")


if __name__ == "__main__":
    main()
