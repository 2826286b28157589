"""Finding a llama-server that can be used, and trying whether it starts."""

import json
import os
import shutil
import subprocess
from pathlib import Path
from typing import Any

from ..fetch.progress import hint
from ..places import BARE_NAME, EXECUTABLE, SERVER_BIN_ENV

# Loading the GPU libraries of a cold disk takes some seconds.
_RUN_SECONDS = 60
CURRENT = "current.json"


def find_binary(bin_dir: Path, path: str | None = None, given_by: str = "--server-bin") -> str:
    """The given path, else the environment's, else our own, else PATH's, else the bare name."""
    for origin, name in ((given_by, path), (SERVER_BIN_ENV, os.environ.get(SERVER_BIN_ENV))):
        if name and (found := executable_at(name)):
            return found
        if name:
            hint(f"{origin}: {name} is not an executable file; looking elsewhere")
    return installed_binary(bin_dir) or shutil.which(EXECUTABLE) or BARE_NAME


def executable_at(name: str) -> str | None:
    path = Path(name).expanduser()
    if path.is_dir():
        path = path / EXECUTABLE
    return str(path.absolute()) if path.is_file() and os.access(path, os.X_OK) else None


def installed_record(bin_dir: Path) -> dict[str, Any]:
    """What the last successful set-up noted: tag, variant and path below `bin_dir`; or empty."""
    try:
        record = json.loads((bin_dir / CURRENT).read_text(encoding="utf-8"))
    except (OSError, ValueError):
        return {}
    complete = isinstance(record, dict) and {"tag", "variant", "path"} <= record.keys()
    return record if complete else {}


def installed_binary(bin_dir: Path) -> str | None:
    record = installed_record(bin_dir)
    return executable_at(str(bin_dir / str(record["path"]))) if record else None


def run_problem(path: str) -> str | None:
    """Why `path --version` does not work, in a few words; None when it does."""
    try:
        done = subprocess.run(
            [path, "--version"],
            stdin=subprocess.DEVNULL,
            capture_output=True,
            timeout=_RUN_SECONDS,
            check=False,
        )
    except subprocess.TimeoutExpired:
        return f"it did not answer --version within {_RUN_SECONDS} s"
    except (OSError, ValueError) as error:
        return getattr(error, "strerror", None) or str(error)
    if done.returncode == 0:
        return None
    lines = done.stderr.decode("utf-8", "replace").strip().splitlines()
    return lines[-1][:200] if lines else f"it ended with status {done.returncode}"
