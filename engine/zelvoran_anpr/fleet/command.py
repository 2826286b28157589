"""The command line `python -m zelvoran_anpr.fleet read SOURCE --out TARGET`."""

import argparse
import signal
import sys
import threading
import time
from collections.abc import Iterator
from contextlib import closing, contextmanager

from .._version import __version__
from ..region_aliases import to_internal_region
from . import source as sources
from .errors import FleetError
from .job import Job
from .progress import Progress, span

NEEDED = 'This needs Dask and pyarrow: run pip install "zelvoran-anpr[fleet]"'


def main(arguments: list[str]) -> int:
    """Return the exit status: 0 when every photo has its row, 1 when the run could not go on."""
    given = _parser().parse_args(arguments)
    try:
        return read(given)
    except (FleetError, ValueError) as error:
        print(f"Error: {error}", file=sys.stderr)
    except ModuleNotFoundError as error:
        print(f"Error: {NEEDED} ({error})", file=sys.stderr)
    except KeyboardInterrupt:
        print("Stopped before reading; run it again to go on", file=sys.stderr)
    return 1


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="python -m zelvoran_anpr.fleet",
        description="Reads the plates on archives of photos, on many cores and machines.",
    )
    commands = parser.add_subparsers(required=True, metavar="COMMAND")
    command = commands.add_parser("read", help="read photos into a dataset, or go on with one")
    add = command.add_argument
    add("source", metavar="SOURCE", help="folder, list file, or address such as s3://bucket/photos")
    add("--out", required=True, metavar="TARGET", help="folder or address of the results")
    add("--format", choices=("parquet", "jsonl"), default="parquet", help="default: parquet")
    add("--detector-model", default="640p_fp32", help="320p_fp32 or 640p_fp32 (default)")
    add("--ocr-model", default="fp32", help="fp32 (default) or int8")
    add("--region", default="univ", help="group or country of the plates (default: univ)")
    add("--backend", default="cpu", help="cpu (default), cuda or directml")
    add("--confidence", type=float, default=0.5, help="least confidence of a plate (default: 0.5)")
    add("--scheduler", metavar="ADDRESS", help="Dask scheduler, such as tcp://host:8786")
    add("--workers", type=_count, metavar="N",
        help="processes here (default: one per core), or workers of the scheduler to wait for",
        )  # fmt: skip
    return parser


def _count(text: str) -> int:
    if not text.isdecimal() or int(text) < 1:
        raise argparse.ArgumentTypeError(f'"{text}" is no number of workers: use 1 or more')
    return int(text)


def read(given: argparse.Namespace) -> int:
    # Here, so that help and mistakes cost no start of Dask.
    from .ledger import Ledger
    from .storage import folder_at
    from .target import Target

    job = _job(given)
    target = Target(folder_at(given.out), given.format, job)
    with closing(Ledger()) as ledger:
        ledger.add(sources.photos(given.source))
        found = len(ledger)
        if not found:
            raise FleetError(f"No photos in {given.source}: names end in {_endings()}")
        for names in target.done():
            ledger.strike(names)
        left = len(ledger)
        if not left:
            print(f"All {found:,} photos have been read before: {target.name}")
            return 0
        if left < found:
            print(f"{found - left:,} of {found:,} photos have been read before", file=sys.stderr)
        return _run(given, job, ledger, target, left)


def _endings() -> str:
    return ", ".join(sources.SUFFIXES)


def _job(given: argparse.Namespace) -> Job:
    return Job(
        __version__,
        given.detector_model,
        given.ocr_model,
        to_internal_region(given.region),
        given.backend,
        given.confidence,
        given.source,
    )


def _run(given: argparse.Namespace, job: Job, ledger, target, left: int) -> int:
    from .cluster import connected, dashboard
    from .dealing import Dealer
    from .run import Run

    begun = time.monotonic()
    with _stop_signals() as stop, connected(given.scheduler, given.workers) as client:
        print(f"Dask's dashboard: {dashboard(client, given.scheduler)}", file=sys.stderr)
        run = Run(target, Progress(left, sys.stderr), stop)
        try:
            patient = given.scheduler is not None
            run.read(Dealer(client, job, ledger.photos(), left, patient))
        finally:
            _tell_end(run.written, time.monotonic() - begun, left, target.name)
    return int(run.written.photos < left)


def _tell_end(count, seconds: float, left: int, target: str) -> None:
    rate = count.photos / seconds
    print(
        f"{count.photos:,} photos in {span(seconds)} ({rate:.1f}/s): {count.plates:,} plates, "
        f"{count.errors:,} photos could not be read; written to {target}"
    )
    if count.unfetched:
        print(f"{count.unfetched:,} photos could not be fetched: run it again to try them again")
    if count.photos < left:
        print(f"{left - count.photos:,} photos are left: run it again to go on")


@contextmanager
def _stop_signals() -> Iterator[threading.Event]:
    """Let Ctrl+C and SIGTERM end the run between two chunks, when nothing is half written."""
    stop = threading.Event()
    before = {s: signal.signal(s, lambda *_: stop.set()) for s in (signal.SIGINT, signal.SIGTERM)}
    try:
        yield stop
    finally:
        for number, handler in before.items():
            signal.signal(number, handler)
