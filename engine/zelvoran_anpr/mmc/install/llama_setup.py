"""Choosing a llama-server: the user's own, the installed one, or the best build of a release."""

import os
import shutil
from collections.abc import Iterator
from pathlib import Path

from ..errors import MmcError
from ..fetch.disk import disk_errors
from ..fetch.progress import hint
from ..places import EXECUTABLE, SERVER_BIN_ENV
from . import llama_binary, releases
from .builds import Build, find_build, wanted_variants
from .exclusive import exclusive
from .llama_install import DoesNotRun, answer, install, sweep


def set_up_binary(bin_dir: Path, variant: str, tag: str | None) -> dict[str, str]:
    """`variant`, `path` and perhaps `note`; raises MmcError with the old binary untouched."""
    wanted, tag = wanted_variants(variant or "auto"), None if tag == "latest" else tag
    if found := _users_own(bin_dir, free_choice=variant in ("", "auto") and not tag):
        return found
    alone = exclusive(bin_dir, "another llama-server set-up is running")
    with disk_errors(f"installing llama-server in {bin_dir}"), alone:
        bin_dir.mkdir(exist_ok=True)
        sweep(bin_dir)
        try:
            choices = list(_available(wanted, tag))
        except MmcError as error:
            return _keep_installed(bin_dir, wanted, tag, error)
        known = _known_not_to_run(bin_dir) if len(wanted) > 1 else {}
        return _first_that_runs(bin_dir, choices, wanted, known)


def _users_own(bin_dir: Path, free_choice: bool) -> dict[str, str] | None:
    """The executable that the user named, or, where anything is welcome, the one on PATH."""
    named = os.environ.get(SERVER_BIN_ENV)
    path = llama_binary.find_binary(bin_dir)
    if named and llama_binary.executable_at(named):
        if llama_binary.run_problem(path) is None:
            return {"variant": "own", "path": path, "note": f"named by {SERVER_BIN_ENV}"}
        hint(f"{SERVER_BIN_ENV}: {path} does not start; installing one that does")
    ours = llama_binary.installed_record(bin_dir)
    found = shutil.which(EXECUTABLE) if free_choice and not ours else None
    if found and llama_binary.run_problem(found) is None:
        return {"variant": "system", "path": found, "note": "found on PATH, nothing downloaded"}
    return None


def _available(wanted: list[str], tag: str | None) -> Iterator[tuple[str, Build]]:
    """Release tag and build of each wanted variant that exists, best first; at least one."""
    release = releases.release_by_tag(tag) if tag else releases.latest_release()
    pool = [release]
    if not tag and not any(find_build(release, variant) for variant in wanted):
        pool = releases.recent_releases()
    for candidate in pool:
        builds = [build for variant in wanted if (build := find_build(candidate, variant))]
        if builds:
            yield from ((candidate.tag, build) for build in builds)
            return
    raise MmcError(
        f"llama.cpp {release.tag} has no {' or '.join(wanted)} build for this machine;"
        " choose another --llama-variant or build it yourself"
    )


def _keep_installed(
    bin_dir: Path, wanted: list[str], tag: str | None, error: MmcError
) -> dict[str, str]:
    """Without the release page a fitting binary of an earlier set-up is still good."""
    record = llama_binary.installed_record(bin_dir)
    path = llama_binary.installed_binary(bin_dir)
    fits = record and record["variant"] in wanted and tag in (None, record["tag"])
    if not fits or path is None or llama_binary.run_problem(path) is not None:
        raise error
    return {**answer(record, path), "note": f"kept {record['tag']}: {error}"}


def _first_that_runs(
    bin_dir: Path, choices: list[tuple[str, Build]], wanted: list[str], known: dict[str, str]
) -> dict[str, str]:
    """Install the best choice; `known` tells, per "tag-variant", why it is not worth a try."""
    builds, reasons = {build.variant: (tag, build) for tag, build in choices}, {}
    for variant in wanted:
        if variant not in builds:
            reasons[variant] = f"the release has no {variant} build"
            continue
        tag, build = builds[variant]
        failed = {v: text for v, text in reasons.items() if v in builds}
        try:
            if f"{tag}-{variant}" in known:
                raise DoesNotRun(known[f"{tag}-{variant}"])
            found = install(bin_dir, tag, build, failed)
        except DoesNotRun as error:
            reasons[variant] = str(error)
            continue
        return {**found, "note": "; ".join(reasons.values())} if reasons else found
    raise MmcError("; ".join(reasons.values()))


def _known_not_to_run(bin_dir: Path) -> dict[str, str]:
    """Builds that an earlier set-up fetched in vain: no reason to fetch them again."""
    record = llama_binary.installed_record(bin_dir)
    return {f"{record['tag']}-{v}": text for v, text in record.get("failed", {}).items()}
