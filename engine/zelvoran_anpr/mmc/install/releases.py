"""The release page of llama.cpp: which releases there are and which files they carry."""

import os
import re
from dataclasses import dataclass
from typing import Any
from urllib.parse import quote

from ..errors import MmcError
from ..fetch.http import StatusError, read_json
from ..places import RELEASES_ENV

RELEASES_API = "https://api.github.com/repos/ggml-org/llama.cpp/releases"
RELEASES_PAGE = "https://github.com/ggml-org/llama.cpp/releases"
_RECENT = 10
# Tags become folder names.
_TAG = re.compile(r"[A-Za-z0-9][\w.+-]*")


@dataclass(frozen=True)
class Asset:
    """One downloadable file; `size` in bytes, `sha256` in hex where the page states it."""

    name: str
    url: str
    size: int
    sha256: str | None


@dataclass(frozen=True)
class Release:
    tag: str
    assets: tuple[Asset, ...]


def _base() -> str:
    return (os.environ.get(RELEASES_ENV) or RELEASES_API).rstrip("/")


def release_by_tag(tag: str) -> Release:
    try:
        return _release(read_json(f"{_base()}/tags/{quote(tag, safe='')}"))
    except StatusError as error:
        if error.status == 404:
            raise MmcError(f"llama.cpp has no release {tag}; see {RELEASES_PAGE}") from None
        raise


def latest_release() -> Release:
    return _release(read_json(f"{_base()}/latest"))


def recent_releases() -> list[Release]:
    """The newest few, newest first: a release is announced before all of its files are there."""
    answer = read_json(f"{_base()}?per_page={_RECENT}")
    if not isinstance(answer, list):
        raise MmcError(f"{_base()} is not a release page")
    wanted = [item for item in answer if not (item.get("draft") or item.get("prerelease"))]
    return [_release(item) for item in wanted]


def _release(fields: Any) -> Release:
    try:
        tag = str(fields["tag_name"])
        if not _TAG.fullmatch(tag):
            raise ValueError(tag)
        assets = [_asset(a) for a in fields["assets"] if a.get("state", "uploaded") == "uploaded"]
        return Release(tag, tuple(assets))
    except (KeyError, TypeError, ValueError, AttributeError):
        raise MmcError(f"{_base()} is not a release page; check {RELEASES_ENV}") from None


def _asset(fields: dict[str, Any]) -> Asset:
    kind, _, digest = str(fields.get("digest") or "").partition(":")
    return Asset(
        name=str(fields["name"]),
        url=str(fields["browser_download_url"]),
        size=int(fields["size"]),
        sha256=digest.lower() if kind == "sha256" and digest else None,
    )
