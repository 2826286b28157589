"""Folders that results are written to, on this machine and in storages.

A file appears whole or not at all: here it is written beside and renamed, in a storage it is one
upload, or where the storage knows no uploads it is moved as well.
"""

import os
from pathlib import Path
from typing import BinaryIO, Protocol

from ..atomic_file import write_atomic
from . import addresses
from .errors import FleetError, one_line

_UPLOADS = ("s3", "gcs", "abfs")


class Folder(Protocol):
    name: str

    def names(self) -> list[str]:
        """Return the files' names in order; of hidden ones and of folders none."""

    def open(self, name: str) -> BinaryIO: ...

    def write(self, name: str, data: bytes) -> None: ...

    def remove(self, name: str) -> None: ...


def folder_at(address: str) -> Folder:
    if addresses.is_remote(address):
        return RemoteFolder(addresses.remote_place(address))
    return LocalFolder(addresses.local_path(address))


class LocalFolder:
    def __init__(self, path: str) -> None:
        self._path = path
        self.name = addresses.shown(path)

    def names(self) -> list[str]:
        try:
            with os.scandir(self._path) as entries:
                return sorted(e.name for e in entries if e.name[0] != "." and e.is_file())
        except FileNotFoundError:
            return []
        except OSError as error:
            raise FleetError(f"Cannot write to {self.name}: {error.strerror}") from None

    def open(self, name: str) -> BinaryIO:
        return open(os.path.join(self._path, name), "rb")

    def write(self, name: str, data: bytes) -> None:
        try:
            os.makedirs(self._path, exist_ok=True)
            write_atomic(Path(self._path, name), data, 0o644)
        except OSError as error:
            raise FleetError(f"Cannot write to {self.name}: {error.strerror}") from None

    def remove(self, name: str) -> None:
        os.remove(os.path.join(self._path, name))


class RemoteFolder:
    def __init__(self, place: addresses.Place) -> None:
        self._fs, self._path = place.fs, place.path
        self.name = place.prefix + place.path
        self._check_bucket()

    def _check_bucket(self) -> None:
        from pyarrow.fs import FileType

        bucket = self._path.split("/", 1)[0]
        if self._fs.type_name not in _UPLOADS:
            return
        try:
            found = self._fs.get_file_info(bucket).type
        except OSError as error:
            raise FleetError(f"Cannot write to {self.name}: {one_line(error)}") from None
        if found == FileType.NotFound:
            raise FleetError(f"There is no bucket {bucket}: create it, or name another target")

    def names(self) -> list[str]:
        from pyarrow.fs import FileSelector

        try:
            found = self._fs.get_file_info(FileSelector(self._path, allow_not_found=True))
        except OSError as error:
            raise FleetError(f"Cannot list {self.name}: {one_line(error)}") from None
        return sorted(f.base_name for f in found if f.is_file and f.base_name[0] not in "._")

    def open(self, name: str) -> BinaryIO:
        return self._fs.open_input_file(f"{self._path}/{name}")

    def write(self, name: str, data: bytes) -> None:
        final, uploads = f"{self._path}/{name}", self._fs.type_name in _UPLOADS
        beside = final if uploads else f"{self._path}/.{name}.tmp"
        try:
            if not uploads:
                self._fs.create_dir(self._path)
            with self._fs.open_output_stream(beside) as stream:
                stream.write(data)
            if not uploads:
                self._fs.move(beside, final)
        except OSError as error:
            raise FleetError(f"Cannot write to {self.name}: {one_line(error)}") from None

    def remove(self, name: str) -> None:
        self._fs.delete_file(f"{self._path}/{name}")
