"""The model folder: which files are whole, told without reading a gigabyte each time."""

import contextlib
import json
import os
from pathlib import Path
from typing import Any

from ...atomic_file import write_atomic
from ..errors import MmcError
from ..fetch.digest import sha256_of
from .model_files import ModelFile, ModelSet

_STAMPS = ".verified.json"
PARTS = ".partial"


class ModelStore:
    """`folder` holds the files, `.verified.json` what was hashed, `.partial` what is on its way."""

    def __init__(self, folder: Path) -> None:
        self.folder = folder

    def path(self, file: ModelFile) -> Path:
        return self.folder / file.file

    def part(self, file: ModelFile) -> Path:
        return self.folder / PARTS / f"{file.sha256[:12]}-{file.file}.part"

    def problem(self, file: ModelFile) -> str | None:
        """Why `file` cannot be used, or None: its size fits and its digest was seen to fit."""
        path = self.path(file)
        try:
            stat = path.stat()
        except OSError:
            return f"{file.file} is missing"
        if stat.st_size != file.size:
            return f"{file.file} has {stat.st_size} bytes instead of {file.size}"
        stamp = [file.sha256, stat.st_size, stat.st_mtime_ns]
        if self._stamps().get(file.file) == stamp:
            return None
        if sha256_of(path) != file.sha256:
            return f"{file.file} is damaged"
        self._stamp(file.file, stamp)
        return None

    def adopt(self, file: ModelFile) -> None:
        """Put the verified part in its place."""
        part, path = self.part(file), self.path(file)
        with part.open("rb+") as stream:
            os.fsync(stream.fileno())
        os.replace(part, path)
        stat = path.stat()
        self._stamp(file.file, [file.sha256, stat.st_size, stat.st_mtime_ns])

    def drop_parts(self) -> None:
        """Forget downloads that no file needs any more."""
        folder = self.folder / PARTS
        if folder.is_dir() and not folder.is_symlink():
            for part in folder.glob("*.part"):
                part.unlink(missing_ok=True)
            with contextlib.suppress(OSError):
                folder.rmdir()

    def _stamps(self) -> dict[str, Any]:
        try:
            found = json.loads((self.folder / _STAMPS).read_text(encoding="utf-8"))
        except (OSError, ValueError):
            return {}
        return found if isinstance(found, dict) else {}

    def _stamp(self, name: str, stamp: list[Any]) -> None:
        stamps = {**self._stamps(), name: stamp}
        # In a read-only folder the files are good all the same, and hashed again next time.
        with contextlib.suppress(OSError):
            write_atomic(self.folder / _STAMPS, json.dumps(stamps, indent=1).encode())


def installed_models(store: ModelStore, files: ModelSet) -> dict[str, str]:
    """Paths of both files; raises MmcError naming what is missing or damaged."""
    problems = [text for file in files.files if (text := store.problem(file))]
    if problems:
        raise MmcError(
            f"the on-device model is not in {store.folder}: {'; '.join(problems)}."
            " Run: zv-anpr mmc-setup"
        )
    return {"llm": str(store.path(files.llm)), "mmproj": str(store.path(files.mmproj))}
