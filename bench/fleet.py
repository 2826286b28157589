"""The fleet against as many plain processes over the same engine, and its driver's memory.

    python bench/fleet.py speed PHOTOS [--count 1000] [--workers 2] [--rounds 4]
    python bench/fleet.py memory [--rows 1000 100000]

`speed` deals the photos into rounds and reads each with `python -m zelvoran_anpr.fleet` and with
plain processes, one per worker and each bound to one core, in turn, so that other load weighs on
both alike. It prints photos/s of the whole command, and without its start, which is what a run over
one photo takes, for both sides. Photos that are fewer than `--count` get several names. `memory`
runs over lists of photos that do not exist, whose rows are errors, and prints the driver's peak.
"""

import argparse
import os
import subprocess
import sys
import tempfile
import time
from pathlib import Path

PLAIN = """
import os, sys
core = sorted(os.sched_getaffinity(0))[int(sys.argv[1])]
os.sched_setaffinity(0, {core})
from zelvoran_anpr import reading
detector = reading.zv_anpr_detector_v17("640p_fp32")
ocr = reading.zv_anpr_ocr_v17("fp32", "univ")
os.sched_setaffinity(0, os.sched_getaffinity(os.getppid()))
for path in sys.argv[2:]:
    with open(path, "rb") as file:
        reading.read_plates(detector, ocr, reading.load_image(file.read()))
"""


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    kinds = parser.add_subparsers(required=True)
    speed = kinds.add_parser("speed")
    speed.add_argument("photos", type=Path)
    speed.add_argument("--count", type=int, default=1000)
    speed.add_argument("--workers", type=int, default=os.cpu_count() or 2)
    speed.add_argument("--rounds", type=int, default=4)
    speed.set_defaults(bench=compare_speed)
    memory = kinds.add_parser("memory")
    memory.add_argument("--rows", type=int, nargs="+", default=[1000, 100_000])
    memory.set_defaults(bench=measure_memory)
    given = parser.parse_args()
    given.bench(given)


def compare_speed(given: argparse.Namespace) -> None:
    with tempfile.TemporaryDirectory() as scratch:
        *folders, few = deal(given.photos, given.count, given.rounds, Path(scratch))
        starts = one_round(few, given.workers)
        rounds = [one_round(folder, given.workers) for folder in folders]
    ours, bare = (sum(times) for times in zip(*rounds, strict=True))
    tell("whole command", given.count, ours, bare)
    our_starts, bare_starts = (given.rounds * seconds for seconds in starts)
    tell("without starting", given.count, ours - our_starts, bare - bare_starts)


def one_round(folder: Path, workers: int) -> tuple[float, float]:
    pair = fleet(folder, workers), plain(folder, workers)
    print(f"{folder.name}: fleet {pair[0]:.1f} s, plain processes {pair[1]:.1f} s", flush=True)
    return pair


def tell(what: str, count: int, ours: float, bare: float) -> None:
    ratio = bare / ours
    print(f"{what}: {count / ours:.2f} against {count / bare:.2f} photos/s, ratio {ratio:.3f}")


def deal(photos: Path, count: int, rounds: int, scratch: Path) -> list[Path]:
    """Link `count` photos into one folder per round, and one more into a folder of its own."""
    given = sorted(p.resolve() for p in photos.iterdir() if p.suffix.lower() in (".jpg", ".png"))
    folders = [scratch / f"round-{number}" for number in range(rounds)] + [scratch / "one photo"]
    for folder in folders:
        folder.mkdir()
    for number in range(count):
        photo = given[number % len(given)]
        (folders[number % rounds] / f"{number:06d}{photo.suffix}").symlink_to(photo)
    (folders[-1] / given[0].name).symlink_to(given[0])
    return folders


def fleet(folder: Path, workers: int) -> float:
    target = folder.with_name(folder.name + " plates")
    command = [sys.executable, "-m", "zelvoran_anpr.fleet", "read", folder, "--out", target]
    begun = time.monotonic()
    subprocess.run([*command, "--workers", str(workers)], check=True, capture_output=True)
    return time.monotonic() - begun


def plain(folder: Path, workers: int) -> float:
    photos = sorted(folder.iterdir())
    begun = time.monotonic()
    running = [
        subprocess.Popen([sys.executable, "-c", PLAIN, str(number), *photos[number::workers]])
        for number in range(workers)
    ]
    failed = [process for process in running if process.wait()]
    assert not failed, "a plain process failed"
    return time.monotonic() - begun


def measure_memory(given: argparse.Namespace) -> None:
    with tempfile.TemporaryDirectory() as scratch:
        for rows in given.rows:
            names = Path(scratch, f"{rows}.list")
            names.write_text("".join(f"/no/such/photo-{n:09d}.jpg\n" for n in range(rows)))
            target = Path(scratch, f"{rows}-plates")
            begun = time.monotonic()
            peak = peak_of([names, "--out", target])
            print(f"{rows:,} rows: {peak:.0f} MB, {time.monotonic() - begun:.0f} s", flush=True)


def peak_of(arguments: list) -> float:
    """Return the peak memory of the driver alone, in MB."""
    run = subprocess.Popen(
        [sys.executable, "-m", "zelvoran_anpr.fleet", "read", *arguments],
        stdout=subprocess.DEVNULL,
        stderr=subprocess.DEVNULL,
    )
    _, status, usage = os.wait4(run.pid, 0)
    assert status == 0, f"the run failed with status {status}"
    return usage.ru_maxrss / 1024


if __name__ == "__main__":
    main()
