"""Sizing and removing one folder without ever leaving it: links are unlinked, never followed."""

import errno
import os
import shutil
import stat
import sys
from collections import Counter
from collections.abc import Callable, Iterator
from pathlib import Path

from ..errors import MmcError


def _walk(path: str) -> Iterator[tuple[str, os.stat_result]]:
    """`path` and all below it, each with its own status; what cannot be read is left out."""
    todo = [path]
    while todo:
        entry = todo.pop()
        try:
            found = os.lstat(entry)
            if stat.S_ISDIR(found.st_mode) and not _is_junction(found):
                todo.extend(os.path.join(entry, name) for name in os.listdir(entry))
        except OSError:
            continue
        yield entry, found


def _is_junction(found: os.stat_result) -> bool:
    # Windows shows a junction as a folder: it is a link all the same.
    return bool(getattr(found, "st_reparse_tag", 0))


def dir_size(path: Path) -> int:
    """Bytes of the regular files under `path`, each file once; the unreadable counts 0."""
    files = (f for _, f in _walk(os.fspath(path)) if stat.S_ISREG(f.st_mode))
    return sum({(f.st_dev, f.st_ino): f.st_size for f in files}.values())


def _reclaimable(path: str) -> int:
    """Bytes that removing `path` gives back: a file with another name outside gives none."""
    files = [f for _, f in _walk(path) if stat.S_ISREG(f.st_mode)]
    inside = Counter((f.st_dev, f.st_ino) for f in files)
    whole = {
        (f.st_dev, f.st_ino): f.st_size for f in files if f.st_nlink <= inside[f.st_dev, f.st_ino]
    }
    return sum(whole.values())


def remove_folder(folder: Path) -> dict[str, object]:
    """Remove `folder` and answer {"removed": bool, "freed_bytes": int}.

    Removes all that can be removed, then raises MmcError naming what stayed and why.
    """
    path = os.fspath(folder)
    try:
        root = os.lstat(path)
    except OSError:
        return {"removed": False, "freed_bytes": 0}
    _refuse_mounts(path, root)
    before, kept = _reclaimable(path), list[tuple[str, str]]()
    _remove(path, root, kept)
    freed = before - _reclaimable(path)
    if kept:
        more = f" and {len(kept) - 1} more" if len(kept) > 1 else ""
        raise MmcError(
            f"could not remove {kept[0][0]}{more}: {kept[0][1]}"
            f" ({freed} bytes under {folder} were freed)"
        )
    return {"removed": True, "freed_bytes": freed}


def _refuse_mounts(path: str, root: os.stat_result) -> None:
    for entry, found in _walk(path):
        if found.st_dev != root.st_dev:
            raise MmcError(f"another file system is mounted at {entry}; unmount it first")


def _remove(path: str, root: os.stat_result, kept: list[tuple[str, str]]) -> None:
    def failed(function: Callable[..., object], where: str, error: BaseException) -> None:
        if isinstance(error, FileNotFoundError) or _forced(where, error):
            return
        # A folder that is not empty only repeats what was said about its content.
        if isinstance(error, OSError) and error.errno != errno.ENOTEMPTY:
            kept.append((where, error.strerror or str(error)))

    if not stat.S_ISDIR(root.st_mode) or _is_junction(root):
        try:
            os.rmdir(path) if _is_junction(root) else os.unlink(path)
        except OSError as error:
            failed(os.unlink, path, error)
        return
    try:
        # The standard library's removal is safe against a folder swapped for a link meanwhile.
        if sys.version_info >= (3, 12):
            shutil.rmtree(path, onexc=failed)
        else:
            shutil.rmtree(path, onerror=lambda f, where, info: failed(f, where, info[1]))
    except RecursionError:
        kept.append((path, "it is nested too deeply"))


def _forced(where: str, error: BaseException) -> bool:
    """Windows refuses to delete read-only files: whether it worked once that mark was off."""
    if os.name != "nt" or not isinstance(error, PermissionError):
        return False
    try:
        os.chmod(where, stat.S_IWRITE)
        os.unlink(where)
    except OSError:
        return False
    return True
