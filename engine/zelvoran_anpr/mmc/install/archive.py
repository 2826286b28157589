"""The members of a .zip or a .tar archive in one form, each to be opened when it is its turn."""

import stat
import tarfile
import zipfile
from collections.abc import Callable, Iterator
from dataclasses import dataclass
from functools import partial
from typing import IO


def _nothing() -> None:
    return None


@dataclass(frozen=True)
class Entry:
    """One member; `link` is a symbolic link's target, `twin` another member of the same content."""

    name: str
    mode: int = 0o644
    size: int = 0
    folder: bool = False
    link: str | None = None
    twin: str | None = None
    open: Callable[[], IO[bytes] | None] = _nothing


def tar_entries(tar: tarfile.TarFile) -> Iterator[Entry]:
    for member in tar:
        link = member.linkname if member.issym() else None
        twin = member.linkname if member.islnk() else None
        plain = member.isreg() and not member.issparse()
        opener = partial(tar.extractfile, member) if plain else _nothing
        yield Entry(member.name, member.mode, member.size, member.isdir(), link, twin, opener)


def zip_entries(archive: zipfile.ZipFile) -> Iterator[Entry]:
    for info in archive.infolist():
        mode = info.external_attr >> 16
        link = None
        if stat.S_ISLNK(mode):
            link = archive.read(info).decode("utf-8", "surrogateescape")
        opener = _nothing if _is_special(mode) else partial(archive.open, info)
        yield Entry(info.filename, mode, info.file_size, info.is_dir(), link, None, opener)


def _is_special(mode: int) -> bool:
    return stat.S_IFMT(mode) not in (0, stat.S_IFREG, stat.S_IFDIR, stat.S_IFLNK)
