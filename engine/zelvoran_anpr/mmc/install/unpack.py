"""Unpacking a release archive so that nothing can land, or point, outside the target folder."""

import gzip
import os
import re
import stat
import tarfile
import zipfile
import zlib
from collections.abc import Iterable, Iterator
from pathlib import Path

from ..errors import MmcError

_BROKEN = (
    tarfile.TarError, zipfile.BadZipFile, gzip.BadGzipFile, zlib.error, EOFError, ValueError,
    NotImplementedError,
)  # fmt: skip
_MAX_BYTES = 8 << 30
_MAX_ENTRIES = 20_000
_LEADS_OUT = re.compile(r"^[/\\]|[:\0]|(^|[/\\])\.\.([/\\]|$)")
# Early patch levels of 3.10 and 3.11 have no filter; our own rules are stricter than it is.
_FILTER = {"filter": "data"} if hasattr(tarfile, "data_filter") else {}


class _Unsafe(ValueError):
    pass


def unpack(archive: Path, target: Path) -> None:
    """Unpack a .zip or .tar.gz into `target`; raises MmcError for a broken or unsafe archive."""
    try:
        if zipfile.is_zipfile(archive):
            with zipfile.ZipFile(archive) as opened:
                _unzip(opened, target)
        else:
            with tarfile.open(archive) as tar:
                members = sorted(_vetted(tar), key=tarfile.TarInfo.islnk)
                tar.extractall(target, members, **_FILTER)
    except (_Unsafe, getattr(tarfile, "FilterError", _Unsafe)) as error:
        raise MmcError(f"{archive.name} is unsafe: {error}; nothing installed") from None
    except _BROKEN as error:
        raise MmcError(f"{archive.name} is not a readable archive: {error}") from None


def _unzip(archive: zipfile.ZipFile, target: Path) -> None:
    infos = archive.infolist()
    for info, member in zip(infos, list(_vetted(_as_tar(archive, infos))), strict=True):
        if member.issym():
            (target / member.name).parent.mkdir(parents=True, exist_ok=True)
            (target / member.name).symlink_to(member.linkname)
        else:
            os.chmod(archive.extract(info, target), member.mode)


def _as_tar(archive: zipfile.ZipFile, infos: list[zipfile.ZipInfo]) -> Iterator[tarfile.TarInfo]:
    for info in infos:
        member = tarfile.TarInfo(info.filename)
        member.size, member.mode = info.file_size, info.external_attr >> 16
        if info.is_dir():
            member.type = tarfile.DIRTYPE
        elif stat.S_ISLNK(member.mode):
            member.type, member.linkname = tarfile.SYMTYPE, os.fsdecode(archive.read(info))
        elif stat.S_IFMT(member.mode) not in (0, stat.S_IFREG):
            member.type = tarfile.FIFOTYPE
        yield member


def _vetted(members: Iterable[tarfile.TarInfo]) -> Iterator[tarfile.TarInfo]:
    """The members with plain modes and no owner; raises ValueError for what no release needs."""
    total = 0
    for count, member in enumerate(members):
        total += member.size
        if count >= _MAX_ENTRIES or total > _MAX_BYTES:
            raise ValueError("it unpacks to more than a release can hold")
        if not (member.isreg() or member.isdir() or member.issym() or member.islnk()):
            raise ValueError(f"{member.name!r} is neither a file nor a folder nor a link")
        # A link to a neighbour cannot leave its folder, whatever other links do.
        led_out = member.issym() and re.search(r"[/\\]", member.linkname)
        if led_out or any(map(_LEADS_OUT.search, (member.name, member.linkname))):
            raise _Unsafe(f"{member.name!r} points outside")
        member.mode = 0o755 if member.isdir() or member.mode & 0o111 else 0o644
        member.uid = member.gid = 0  # only root gives files away, and keeps these
        member.uname = member.gname = ""
        yield member
