"""The commands that are put to the torture, each with a working folder and an engine of its own."""

import contextlib
import os
import shutil
import signal
import subprocess
import tempfile
import time
from collections.abc import Callable, Sequence
from dataclasses import dataclass
from pathlib import Path

from PIL import Image
from program import EXECUTABLE, Program
from server_commands.engine_modules import CONFIG, DAEMON, SCRIPT

OLD = b"what was there before\n" * 20
LONGEST = 60
"""Seconds that a run may take before it counts as hanging."""
GRACE = 12
"""Seconds after which a process that the program has left must be gone."""
ANSWER = """
PLATE = {"ocr": "12AB3456", "ocr_conf": 0.97, "ltrb": [40, 60, 140, 90], "ltrb_conf": 0.88}


def answer(path):
    return {"results": [PLATE] * 9}
"""
SERVER = """
STATUS = {
    "running": True, "url": "http://127.0.0.1:8123", "pid": 77, "port": 8123,
    "host": "127.0.0.1", "version": "3.2.1", "uptime": 5,
}


def get_status(*args, **keywords):
    return STATUS


def find_all_servers(*args, **keywords):
    return []


def print_table(servers):
    print("no servers")
"""

COMMANDS: dict[str, tuple[str, ...]] = {
    "version": ("--version",),
    "help": ("read", "-h"),
    "usage": ("read", "--confidence", "x"),
    "json": ("read", "car.png", "--json", "out/r.json"),
    "jpeg": ("read", "car.png", "--output", "out/p.jpg"),
    "png": ("read", "car.png", "--output", "out/p.png", "--json", "out/r.json"),
    "tiff": ("read", "car.png", "--output", "out/p.tif"),
    "bmp": ("read", "car.png", "--output", "out/p.bmp"),
    "new": ("read", "car.png", "--output", "out/new.png", "--json", "out/new.json"),
    "own": ("read", "out/own.png", "--output", "out/own.png"),
    "folder": ("read", "photos", "--output", "out/copies", "--json", "out/r.json"),
    "model-info": ("model-info",),
    "logs": ("server", "logs", "-n", "20"),
    "health": ("server", "health", "--port", "1"),
    "status": ("server", "status"),
}
WRITERS = ("json", "jpeg", "png", "tiff", "bmp", "new", "own", "folder")
"""Commands that write files."""


@dataclass(frozen=True)
class Outcome:
    """What a run came to; `status` is None for one that had to be killed."""

    status: int | None
    text: str
    files: dict[str, bytes]
    running: tuple[str, ...]


def _let_others_in(folder: Path) -> None:
    """Open a temporary folder to the user under whom limits count for root's tests.

    Without it that user's interpreter would not find this engine, but the installed one.
    """
    scratch = Path(tempfile.gettempdir()).resolve()
    for place in (folder.resolve(), *folder.resolve().parents):
        if not place.is_relative_to(scratch) or place == scratch:
            return
        place.chmod(place.stat().st_mode | 0o055)


class Stage:
    """One command with all it needs, put back to its beginning before each run."""

    def __init__(self, folder: Path, name: str) -> None:
        folder.mkdir(parents=True, exist_ok=True)
        _let_others_in(folder)
        self.zv = Program(folder)
        self.name = name
        self.words = [EXECUTABLE, *COMMANDS[name]]
        self.out = self.zv.folder / "out"
        self.after = folder / "after"
        self.trace = folder / "trace"
        self.old = folder / "old"
        self._engine()
        self._photos()
        self.reset()

    def _engine(self) -> None:
        self.zv.script(ANSWER)
        self.zv.engine_file("zelvoran_anpr_server_daemon.py", DAEMON)
        self.zv.engine_file("zelvoran_anpr_server_config.py", CONFIG)
        self.zv.engine_file("_server_script.py", SCRIPT + SERVER)
        log = self.zv.home / ".zelvoran" / "logs" / "server.log"
        log.parent.mkdir(parents=True)
        log.write_text("".join(f"line {number}\n" for number in range(200)))

    def _photos(self) -> None:
        photo = Image.effect_noise((180, 120), 90).convert("RGB")
        (self.zv.folder / "photos").mkdir()
        (self.old / "copies").mkdir(parents=True)
        for path in ("car.png", "photos/a.png", "photos/b.png", "photos/c.png"):
            photo.save(self.zv.folder / path)
        for name in ("r.json", "p.jpg", "p.png", "p.tif", "p.bmp", "copies/detected_a.png"):
            (self.old / name).write_bytes(OLD)
        photo.save(self.old / "own.png")

    def reset(self) -> None:
        for folder in (self.out, self.after):
            shutil.rmtree(folder, ignore_errors=True)
        shutil.copytree(self.old, self.out)
        self.zv.calls_file.unlink(missing_ok=True)

    def run(self, before: Sequence = (), env: dict | None = None, prepare=None) -> Outcome:
        """Run the command behind the words `before`; `prepare` is called in its process first."""
        self.reset()
        mark = f"{self.zv.folder};"
        process = subprocess.Popen(
            [*before, *self.words], cwd=self.zv.folder, start_new_session=True,
            env=self.zv.environment(ZV_TORTURE=mark, **(env or {})),
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            preexec_fn=lambda: ready(prepare),  # noqa: PLW1509  no thread runs here
        )  # fmt: skip
        try:
            text, status = process.communicate(timeout=LONGEST)[0], process.returncode
        except subprocess.TimeoutExpired:
            kill_marked(mark)
            text, status = process.communicate()[0], None
        running = still_running(mark)
        files = contents(self.after if self.after.exists() else self.out)
        return Outcome(status, text.decode(errors="replace"), files, running)


def ready(prepare: Callable[[], object] | None) -> None:
    """Jobs in the background of a script ignore Ctrl+C; this one shall not."""
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    if prepare:
        prepare()


def contents(folder: Path) -> dict[str, bytes]:
    paths = [path for path in folder.rglob("*") if path.is_file()]
    return {str(path.relative_to(folder)): path.read_bytes() for path in paths}


def marked(mark: str) -> dict[int, str]:
    """The living processes that were started with the mark in their environment."""
    found = {}
    for entry in filter(lambda entry: entry.name.isdigit(), Path("/proc").iterdir()):
        with contextlib.suppress(OSError):
            if mark.encode() in (entry / "environ").read_bytes():
                command = (entry / "cmdline").read_bytes().replace(b"\0", b" ")
                found[int(entry.name)] = command[:80].decode(errors="replace")
    return found


def still_running(mark: str) -> tuple[str, ...]:
    """What the program has left behind; it is killed. The engine gets a while to end itself."""
    end = time.monotonic() + GRACE
    while (left := marked(mark)) and time.monotonic() < end:
        time.sleep(0.02)
    kill_marked(mark)
    return tuple(left.values())


def kill_marked(mark: str) -> None:
    for process in marked(mark):
        with contextlib.suppress(ProcessLookupError):
            os.kill(process, signal.SIGKILL)
