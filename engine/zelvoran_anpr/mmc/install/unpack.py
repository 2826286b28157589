"""Unpacking a release archive so that nothing can land, or point, outside the target folder."""

import os
import shutil
import tarfile
import zipfile
import zlib
from collections.abc import Iterator
from pathlib import Path, PurePosixPath

from ..errors import MmcError
from .archive import Entry, tar_entries, zip_entries

_BROKEN = (
    tarfile.TarError,
    zipfile.BadZipFile,
    zlib.error,
    EOFError,
    ValueError,
    NotImplementedError,
)
_MAX_BYTES = 8 << 30
_MAX_ENTRIES = 20_000


def unpack(archive: Path, target: Path) -> None:
    """Unpack a .zip or .tar.gz into `target`; raises MmcError for a broken or unsafe archive."""
    try:
        if zipfile.is_zipfile(archive):
            with zipfile.ZipFile(archive) as opened:
                _unpack(list(_limited(zip_entries(opened))), target, archive.name)
        else:
            with tarfile.open(archive) as tar:
                _unpack(list(_limited(tar_entries(tar))), target, archive.name)
    except MmcError:
        raise
    except _BROKEN as error:
        raise MmcError(f"{archive.name} is not a readable archive: {error}") from None


def _limited(entries: Iterator[Entry]) -> Iterator[Entry]:
    total = 0
    for count, entry in enumerate(entries):
        total += entry.size
        if count >= _MAX_ENTRIES or total > _MAX_BYTES:
            raise ValueError("it unpacks to more than a release can hold")
        yield entry


def _unpack(entries: list[Entry], target: Path, archive: str) -> None:
    # Links come last: no file is ever written through one.
    for entry in sorted(entries, key=lambda e: (e.link is not None, e.twin is not None)):
        place = target / _inside(entry.name, archive)
        if entry.folder:
            place.mkdir(parents=True, exist_ok=True)
            continue
        place.parent.mkdir(parents=True, exist_ok=True)
        if entry.link is not None:
            _inside(str(PurePosixPath(entry.name).parent / entry.link), archive)
            os.symlink(entry.link, place)
        elif entry.twin is not None:
            shutil.copy2(target / _inside(entry.twin, archive), place)
        else:
            _write(entry, place)
    _refuse_escapes(target, archive)


def _inside(name: str, archive: str) -> Path:
    """`name` as a path below the target; raises MmcError when it leads out."""
    depth, steps = 0, []
    for step in name.replace("\\", "/").split("/"):
        if step in ("", "."):
            continue
        steps.append(step)
        depth += -1 if step == ".." else 1
        if depth < 0:
            break
    odd = name.startswith(("/", "\\")) or ":" in name or "\0" in name
    if odd or depth < 0:
        raise MmcError(f"{archive} is unsafe: {name!r} points outside; nothing installed")
    return Path(os.path.normpath("/".join(steps) or "."))


def _write(entry: Entry, place: Path) -> None:
    source = entry.open()
    if source is None:
        raise ValueError(f"{entry.name!r} is neither a file nor a folder nor a link")
    with source, place.open("wb") as out:
        shutil.copyfileobj(source, out, 1 << 20)
    place.chmod(0o755 if entry.mode & 0o111 else 0o644)


def _refuse_escapes(target: Path, archive: str) -> None:
    root = os.path.realpath(target)
    for folder, folders, files in os.walk(target):
        for name in folders + files:
            real = os.path.realpath(os.path.join(folder, name))
            if os.path.commonpath([root, real]) != root:
                raise MmcError(f"{archive} is unsafe: {name!r} links out; nothing installed")
