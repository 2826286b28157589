"""Keeps the files of an installed package, to put them back when its successor does not work."""

import shutil
import tempfile
from importlib import metadata
from pathlib import Path


class SavedPackage:
    """A copy of a distribution's files while the block runs; empty when pip knows none."""

    def __init__(self, name: str) -> None:
        self._name = name
        self._folder = Path(tempfile.mkdtemp(prefix="zv-anpr-upgrade-"))
        self._copies: dict[Path, Path] = {}

    def __enter__(self) -> "SavedPackage":
        for number, path in enumerate(_files(self._name)):
            self._copies[path] = self._folder / str(number)
            shutil.copy2(path, self._copies[path])
        return self

    def __exit__(self, *_: object) -> None:
        shutil.rmtree(self._folder, ignore_errors=True)

    def restore(self) -> bool:
        """Put the files back and remove those that came since; False when there are none."""
        if not self._copies:
            return False
        for path in _files(self._name):
            if path not in self._copies:
                path.unlink(missing_ok=True)
        for path, copy in self._copies.items():
            path.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(copy, path)
        return True


def _files(name: str) -> list[Path]:
    try:
        listed = metadata.distribution(name).files or []
    except metadata.PackageNotFoundError:
        return []
    found = (Path(str(entry.locate())) for entry in listed if entry.suffix != ".pyc")
    return [path for path in found if path.is_file()]
