"""Installing one llama-server build; the old one serves until the new one runs.

Below the binaries' folder: `downloads/` (resumable parts), `releases/<tag>-<variant>/`, and
`current.json`, whose atomic replacement is the moment of the switch.
"""

import json
import os
import shutil
import tempfile
from pathlib import Path
from typing import Any

from ...atomic_file import write_atomic
from ..errors import MmcError
from ..fetch.download import Remote, fetch
from ..places import EXECUTABLE
from . import llama_binary, releases
from .builds import Build
from .unpack import unpack


class DoesNotRun(MmcError):
    """The build was verified and unpacked, but its executable does not start here."""


def install(bin_dir: Path, tag: str, build: Build, failed: dict[str, str]) -> dict[str, str]:
    """Fetch, verify, unpack, try and switch to `build`; `failed`: variants known not to run.

    Raises DoesNotRun or MmcError with the installed one untouched.
    """
    record = llama_binary.installed_record(bin_dir)
    current = llama_binary.installed_binary(bin_dir)
    wanted = current and (record["tag"], record["variant"]) == (tag, build.variant)
    if wanted and llama_binary.run_problem(current) is None:
        return answer(record, current)
    parts = [_download(bin_dir, tag, asset) for asset in build.assets]
    fresh = Path(tempfile.mkdtemp(prefix=".unpack-", dir=bin_dir))
    try:
        executable = _unpack_all(parts, fresh)
        if problem := llama_binary.run_problem(str(executable)):
            raise DoesNotRun(f"the {build.variant} build of {tag} does not run here: {problem}")
        record = {"tag": tag, "variant": build.variant, "failed": failed}
        return _switch(bin_dir, record, executable.relative_to(fresh), fresh)
    finally:
        shutil.rmtree(fresh, ignore_errors=True)


def _download(bin_dir: Path, tag: str, asset: releases.Asset) -> Path:
    key = (asset.sha256 or tag)[:12]
    part = bin_dir / "downloads" / f"{key}-{Path(asset.name).name}"
    fetch(Remote(asset.url, asset.name, asset.size, asset.sha256), part)
    return part


def _unpack_all(parts: list[Path], fresh: Path) -> Path:
    """The executable; companion archives are unpacked beside it, where it looks for libraries."""
    unpack(parts[0], fresh)
    found = sorted(fresh.rglob(EXECUTABLE), key=lambda path: len(path.parts))
    if not found:
        raise MmcError(f"{parts[0].name} holds no {EXECUTABLE}; nothing was installed")
    for part in parts[1:]:
        with tempfile.TemporaryDirectory(dir=fresh) as side:
            unpack(part, Path(side))
            for file in [path for path in Path(side).rglob("*") if path.is_file()]:
                os.replace(file, found[0].parent / file.name)
    return found[0]


def _switch(bin_dir: Path, record: dict[str, Any], inner: Path, fresh: Path) -> dict[str, str]:
    home = bin_dir / "releases" / "{tag}-{variant}".format(**record)
    home.parent.mkdir(exist_ok=True)
    if home.exists():
        os.replace(home, tempfile.mkdtemp(prefix=".old-", dir=bin_dir))
    os.replace(fresh, home)
    path = home / inner
    record["path"] = path.relative_to(bin_dir).as_posix()
    write_atomic(bin_dir / llama_binary.CURRENT, json.dumps(record, indent=1).encode())
    sweep(bin_dir)
    shutil.rmtree(bin_dir / "downloads", ignore_errors=True)
    return answer(record, str(path))


def sweep(bin_dir: Path) -> None:
    """Drop what an interrupted set-up left and every release that is not the current one."""
    record = llama_binary.installed_record(bin_dir)
    for stray in [*bin_dir.glob(".unpack-*"), *bin_dir.glob(".old-*")]:
        shutil.rmtree(stray, ignore_errors=True)
    releases_dir = bin_dir / "releases"
    for home in [] if releases_dir.is_symlink() else releases_dir.glob("*"):
        if record and not str(record["path"]).startswith(f"releases/{home.name}/"):
            shutil.rmtree(home, ignore_errors=True)


def answer(record: dict[str, Any], path: str) -> dict[str, str]:
    return {"variant": str(record["variant"]), "path": path}
