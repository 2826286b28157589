"""Addresses of photos and targets: paths of this machine, and URIs that pyarrow understands.

A photo is named by its path, or by its URI without credentials and options and with its key as it
is (not percent-encoded): "s3://bucket/a b.jpg".
"""

import os
import re
from functools import lru_cache
from typing import NamedTuple
from urllib.parse import unquote, urlsplit
from urllib.request import url2pathname

from .errors import FleetError, one_line

TYPE_CHECKING = False  # pyarrow is loaded only where an address needs it
if TYPE_CHECKING:
    from pyarrow.fs import FileSystem

# Of two characters or more: "C:/photos" is a path.
_SCHEME = re.compile(r"([A-Za-z][A-Za-z0-9+.-]+)://")


class Place(NamedTuple):
    """A path on a file system; `prefix + path` is the name of what lies there."""

    fs: "FileSystem"
    path: str
    prefix: str


def is_remote(address: str) -> bool:
    found = _SCHEME.match(address)
    return bool(found) and found.group(1).lower() != "file"


def local_path(address: str) -> str:
    """Return the absolute path, its links resolved, of a path or a file:// address."""
    if _SCHEME.match(address):
        address = url2pathname(urlsplit(address).path)
    return os.path.realpath(address)


def name_of(address: str) -> str:
    """Return how an address is shown: printable UTF-8, other bytes as \\xff."""
    if is_remote(address):
        parts = urlsplit(address)
        host = parts.netloc.rpartition("@")[2] if ":" in parts.netloc else parts.netloc
        address = f"{parts.scheme}://{host}{unquote(parts.path)}"
    return shown(address)


def shown(path: str) -> str:
    return os.fsencode(path).decode("utf-8", "backslashreplace")


@lru_cache(maxsize=32)
def remote_place(uri: str) -> Place:
    """Return the place a URI names; raises FleetError when pyarrow cannot use it."""
    try:
        from pyarrow.fs import FileSystem
    except ImportError:
        raise FleetError(
            f'{name_of(uri)} needs pyarrow: run pip install "zelvoran-anpr[fleet]"'
        ) from None
    try:
        fs, path = FileSystem.from_uri(uri)
    except (OSError, ValueError, NotImplementedError) as error:
        raise FleetError(f"Cannot use the address {name_of(uri)}: {one_line(error)}") from None
    name = name_of(uri).rstrip("/")
    path = path if path == "/" else path.rstrip("/")
    prefix = name.removesuffix(path) if name.endswith(path) else f"{urlsplit(uri).scheme}://"
    return Place(fs, path, prefix)


def photo_place(photo: str, source: str) -> Place:
    """Return the place of a remote photo, reached as `source` says where they share a storage."""
    root = _root(photo)
    base = remote_place(source if is_remote(source) and _root(name_of(source)) == root else root)
    return base._replace(path=photo.removeprefix(base.prefix))


def _root(name: str) -> str:
    return "/".join(name.split("/", 3)[:3])
