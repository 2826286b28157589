"""The settings a server runs with: the configuration with defaults filled in, checked."""

import os
from collections.abc import Mapping
from types import SimpleNamespace
from typing import Any, NamedTuple

from .config_file import ConfigError, load_config
from .options import OPTIONS
from .paths import config_path


class Settings(NamedTuple):
    """Each section holds every option of the table as an attribute."""

    server: SimpleNamespace
    mmc: SimpleNamespace
    limits: SimpleNamespace
    source: str | None
    """The configuration file that was named, as an absolute path, or None for the usual one."""


def load_settings(path: str | None, named: Mapping[str, Any]) -> Settings:
    """Read a configuration; `named` holds `server` options that the user gave instead.

    Raises ConfigError with one line that names the key, what stands there and what may.
    """
    file = path or config_path()
    config = load_config(path)
    given = {key: value for key, value in named.items() if value is not None}
    checked = {name: _section(str(file), name, config.get(name, {}), {}) for name in OPTIONS}
    checked["server"] = _section("command line", "server", vars(checked["server"]), given)
    source = os.path.abspath(path) if path else None
    return Settings(**checked, source=source)


def _section(
    origin: str, name: str, config: Mapping[str, Any], named: Mapping[str, Any]
) -> SimpleNamespace:
    values = {}
    for key, option in OPTIONS[name].items():
        value = named.get(key, config.get(key))
        if value is None:
            value = option.default
        expected = option.check(value)
        if expected:
            raise ConfigError(f"{origin}: {name}.{key} must be {expected}, not {value!r}")
        values[key] = value
    return SimpleNamespace(**values)
