"""Choosing the files of a llama.cpp release for this system, machine and accelerator.

File names read `llama-<tag>-bin-<system>[-<accelerator>[-<version>]]-<machine>.<zip|tar.gz>`;
a plain one is for the CPU, except on Apple silicon, where it has Metal built in.
"""

import re
from dataclasses import dataclass

from ..errors import MmcError
from . import accelerators
from .releases import Asset, Release

VARIANTS = ("auto", "cpu", "vulkan", "cuda", "metal")
_BUILD = re.compile(
    r"(?P<kind>cudart-llama|llama)-(?:.+-)?bin-(?P<system>ubuntu|win|macos)"
    r"(?:-(?P<flavour>[a-z]\w*?)(?:-(?:cu)?(?P<version>[\d.]+))?)?"
    r"-(?P<machine>x64|arm64|s390x)\.(?:zip|tar\.gz)"
)


@dataclass(frozen=True)
class Build:
    """The archives to unpack over each other into one folder."""

    variant: str
    assets: tuple[Asset, ...]


def wanted_variants(variant: str) -> list[str]:
    """What to try, best first; only `auto` gives a choice."""
    if variant not in VARIANTS:
        raise MmcError(f"unknown variant {variant!r}; choose one of {', '.join(VARIANTS)}")
    if variant != "auto":
        return [variant]
    if accelerators.release_platform()[0] == "macos":
        return ["metal", "cpu"]
    cuda = ["cuda"] if accelerators.cuda_driver_version() else []
    return cuda + (["vulkan"] if accelerators.vulkan_loader() else []) + ["cpu"]


def find_build(release: Release, variant: str) -> Build | None:
    """The archives of `variant` for this machine, or None when the release has none."""
    system, machine = accelerators.release_platform()
    flavours = _flavours(system, machine, variant)
    found: dict[tuple[int, ...], dict[str, Asset]] = {}
    for asset in release.assets:
        match = _BUILD.fullmatch(asset.name)
        if not match or (match["system"], match["machine"]) != (system, machine):
            continue
        if (match["flavour"] or "") in flavours:
            version = tuple(int(n) for n in (match["version"] or "").split(".") if n)
            found.setdefault(version, {})[match["kind"]] = asset
    versions = [version for version, kinds in found.items() if "llama" in kinds]
    if not versions:
        return None
    kinds = found[_best(versions)]
    return Build(variant, tuple(kinds[kind] for kind in ("llama", "cudart-llama") if kind in kinds))


def _flavours(system: str, machine: str, variant: str) -> tuple[str, ...]:
    if variant == "metal":
        return ("",) if (system, machine) == ("macos", "arm64") else ()
    return ("", "cpu") if variant == "cpu" else (variant,)


def _best(versions: list[tuple[int, ...]]) -> tuple[int, ...]:
    """The newest CUDA that the driver can run: any of its own major version, or older."""
    if len(versions) == 1:
        return versions[0]
    driver = accelerators.cuda_driver_version()
    if driver is None:
        return min(versions)
    fits = [v for v in versions if v <= driver] or [v for v in versions if v[:1] == driver[:1]]
    return max(fits) if fits else min(versions)
