"""The real executable as the end-to-end tests run it, driven by a scripted engine package."""

import contextlib
import json
import os
import pty
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
EXECUTABLE = Path(os.environ.get("ZV_ANPR_EXE", ROOT / "build" / "release" / "zv-anpr"))

ENGINE = {
    "__init__.py": """
from zelvoran_anpr._record import record
import zelvoran_anpr._script as script


class zv_anpr_detector_v17:
    def __init__(self, *args, **keywords):
        record("detector", args, keywords)
        getattr(script, "on_detector", lambda: None)()


class zv_anpr_ocr_v17:
    def __init__(self, *args, **keywords):
        record("ocr", args, keywords)
        getattr(script, "on_ocr", lambda: None)()


def zelvoran_anpr_from_image_file(detector, ocr, path):
    assert isinstance(detector, zv_anpr_detector_v17) and isinstance(ocr, zv_anpr_ocr_v17)
    record("read", (path,), {})
    return script.answer(path)
""",
    "_record.py": """
import json
import os


def record(name, args, keywords):
    with open(os.environ["ZV_TEST_CALLS"], "a", encoding="utf-8", errors="surrogateescape") as file:
        file.write(json.dumps([name, list(args), keywords]) + "\\n")
""",
    "_version.py": '__version__ = "3.2.1"\n',
    "region_aliases.py": """
from zelvoran_anpr._record import record


def to_internal_region(region):
    record("to_internal_region", (region,), {})
    return "internal-" + region


def to_api_region(region):
    record("to_api_region", (region,), {})
    return region
""",
    "_script.py": "def answer(path):\n    return {'results': []}\n",
}


@dataclass
class Result:
    status: int
    out: str
    err: str

    def __iter__(self):
        return iter((self.status, self.out, self.err))


class Program:
    """The executable in a working directory of its own, with an engine made for the test."""

    def __init__(self, folder: Path) -> None:
        self.folder = folder / "work"
        self.folder.mkdir()
        self.home = folder / "home"
        self.home.mkdir()
        self.engine_folder = folder / "engine"
        self.calls_file = folder / "calls.jsonl"
        for name, text in ENGINE.items():
            self.engine_file(name, text)

    def engine_file(self, name: str, text: str) -> None:
        path = self.engine_folder / "zelvoran_anpr" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def pretend(self, system: str, machine: str) -> None:
        """Another operating system and machine, as far as every interpreter started can tell."""
        names = f"platform.system = lambda: {system!r}\nplatform.machine = lambda: {machine!r}\n"
        (self.engine_folder / "sitecustomize.py").write_text(f"import platform\n{names}")

    def script(self, text: str) -> None:
        """What the engine does: a module with `answer(path)`."""
        self.engine_file("_script.py", text)

    def environment(self, **changes: str | None) -> dict[str, str]:
        environment = {
            **os.environ,
            "HOME": str(self.home),
            "PYTHONPATH": str(self.engine_folder),
            "ZV_ANPR_PYTHON": sys.executable,
            "ZV_TEST_CALLS": str(self.calls_file),
            "COLUMNS": "80",
            **{name: value for name, value in changes.items() if value is not None},
        }
        for name in [name for name, value in changes.items() if value is None]:
            environment.pop(name, None)
        return environment

    def popen(self, *words, env: dict | None = None, **options) -> subprocess.Popen:
        options.setdefault("stdout", subprocess.PIPE)
        options.setdefault("stderr", subprocess.PIPE)
        options.setdefault("stdin", subprocess.DEVNULL)
        options.setdefault("cwd", self.folder)
        return subprocess.Popen(
            [EXECUTABLE, *words], env=self.environment(**(env or {})), **options
        )

    def __call__(self, *words, env: dict | None = None, stdin: str = "", **options) -> Result:
        process = self.popen(*words, env=env, stdin=subprocess.PIPE, **options)
        out, err = process.communicate(stdin.encode(), timeout=120)
        return Result(process.returncode, (out or b"").decode(), (err or b"").decode())

    def on_terminal(self, *words: str) -> str:
        """What a run that ends well shows when output and errors go to a terminal."""
        screen, program = pty.openpty()
        process = self.popen(*words, stdout=program, stderr=program)
        os.close(program)
        shown = b""
        with contextlib.suppress(OSError):  # the other side is closed
            while chunk := os.read(screen, 1 << 16):
                shown += chunk
        os.close(screen)
        assert process.wait(timeout=120) == 0
        return shown.decode().replace("\r\n", "\n")

    def calls(self) -> list:
        if not self.calls_file.exists():
            return []
        return [json.loads(line) for line in self.calls_file.read_text().splitlines()]
