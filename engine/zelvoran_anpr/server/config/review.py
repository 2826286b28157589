"""Everything that is wrong or odd in a configuration, one line each."""

from collections.abc import Iterator, Mapping
from dataclasses import fields
from typing import Any

from ...options import problems
from .options import BACKENDS, SECTIONS


def wrong_values(config: Mapping[str, Any]) -> list[str]:
    """Return what no server would start with, and what no backend would."""
    groups = [(name, kind, config.get(name)) for name, kind in SECTIONS.items()]
    groups += [(f"mmc.{name}", kind, _mmc(config).get(name)) for name, kind in BACKENDS.items()]
    return [line for name, kind, values in groups for line in problems(kind, values, name)]


def unknown_keys(config: Mapping[str, Any]) -> list[str]:
    """Return what means nothing, with the nearest option that there is."""
    sections = {name: {item.name for item in fields(kind)} for name, kind in SECTIONS.items()}
    sections["mmc"] |= {*BACKENDS}
    lines = list(_unknown("", config, {*SECTIONS}))
    for name, known in sections.items():
        lines += _unknown(f"{name}.", config.get(name), known)
    for name, kind in BACKENDS.items():
        known = {item.name for item in fields(kind)}
        lines += _unknown(f"mmc.{name}.", _mmc(config).get(name), known)
    return lines


def _mmc(config: Mapping[str, Any]) -> Mapping[str, Any]:
    return config.get("mmc") or {}


def _unknown(prefix: str, values: Any, known: set[str]) -> Iterator[str]:
    from difflib import get_close_matches

    for key in values if isinstance(values, Mapping) else ():
        if key not in known:
            near = get_close_matches(str(key), sorted(known), 1)
            advice = f"; did you mean {prefix}{near[0]}?" if near else ""
            yield f"{prefix}{key} is no option{advice}"
