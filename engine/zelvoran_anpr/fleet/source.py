"""Finds the photos of a source: a folder and all below it, a list file, or either in a storage."""

import os
from collections.abc import Iterator

from . import addresses
from .errors import FleetError, one_line

SUFFIXES = (".jpg", ".jpeg", ".png", ".bmp", ".tiff", ".tif")


def photos(source: str) -> Iterator[str]:
    """Yield the photos of a source one by one; of a folder never more than one level is held.

    A list file has one path or address per line; all of them count, whatever their ending.
    """
    if addresses.is_remote(source):
        yield from _remote(addresses.remote_place(source))
        return
    path = addresses.local_path(source)
    if os.path.isdir(path):
        yield from _below(path)
    elif is_photo(path):
        yield path
    else:
        yield from _of_list_file(path)


def is_photo(path: str) -> bool:
    """Tell whether a name ends as photos do, in small or in capital letters."""
    return path.endswith(SUFFIXES) or path.endswith(tuple(s.upper() for s in SUFFIXES))


def _below(folder: str) -> Iterator[str]:
    waiting = [folder]
    while waiting:
        current = waiting.pop()
        try:
            with os.scandir(current) as entries:
                for entry in entries:
                    if entry.is_dir(follow_symlinks=False):
                        waiting.append(entry.path)
                    elif is_photo(entry.name) and entry.is_file():
                        yield entry.path
        except OSError as error:
            name = addresses.shown(current)
            raise FleetError(f"Cannot list the folder {name}: {error.strerror}") from None


def _of_list_file(path: str) -> Iterator[str]:
    try:
        with open(path, encoding="utf-8", errors="surrogateescape") as lines:
            yield from _entries(lines)
    except OSError as error:
        name = addresses.shown(path)
        raise FleetError(f"Cannot read the source {name}: {error.strerror}") from None


def _entries(lines: Iterator[str]) -> Iterator[str]:
    for line in lines:
        entry = line.rstrip("\r\n")
        if entry.strip():
            yield entry if addresses.is_remote(entry) else addresses.local_path(entry)


def _remote(place: addresses.Place) -> Iterator[str]:
    from pyarrow.fs import FileType

    try:
        kind = place.fs.get_file_info(place.path).type
        if kind == FileType.Directory:
            yield from _remote_below(place)
        elif kind == FileType.NotFound:
            raise FleetError(f"Nothing is at {place.prefix}{place.path}: check bucket and path")
        elif is_photo(place.path):
            yield place.prefix + place.path
        else:
            import io

            with place.fs.open_input_stream(place.path) as stream:
                yield from _entries(io.TextIOWrapper(stream, "utf-8"))
    except OSError as error:
        name = place.prefix + place.path
        raise FleetError(f"Cannot list {name}: {one_line(error)}") from None


def _remote_below(place: addresses.Place) -> Iterator[str]:
    from pyarrow.fs import FileSelector

    waiting = [place.path]
    while waiting:
        for info in place.fs.get_file_info(FileSelector(waiting.pop())):
            if not info.is_file:
                waiting.append(info.path)
            elif is_photo(info.base_name):
                yield place.prefix + info.path
