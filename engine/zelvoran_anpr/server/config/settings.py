"""The settings a server runs with: the configuration with defaults filled in, checked."""

import os
from collections.abc import Mapping
from typing import Any, NamedTuple

from ... import options
from .config_file import ConfigError, load_config
from .options import SECTIONS, Limits, MmcOptions, ServerOptions
from .paths import config_path
from .review import unknown_keys


class Settings(NamedTuple):
    server: ServerOptions
    mmc: MmcOptions
    limits: Limits
    source: str | None
    """The configuration file that was named, as an absolute path, or None for the usual one."""
    warnings: tuple[str, ...]
    """A line for each thing in the configuration that is likely a mistake and means nothing."""


def load_settings(path: str | None, named: Mapping[str, Any]) -> Settings:
    """Read a configuration; `named` holds `server` options that the user gave instead.

    Raises ConfigError with one line that names the key, what stands there and what may.
    """
    file = path or config_path()
    config = load_config(path)
    checked = {name: _section(str(file), name, config.get(name)) for name in SECTIONS}
    given = {key: value for key, value in named.items() if value is not None}
    checked["server"] = _section("command line", "server", vars(checked["server"]) | given)
    warnings = tuple(f"{file}: {line}" for line in unknown_keys(config))
    return Settings(**checked, source=os.path.abspath(path) if path else None, warnings=warnings)


def _section(origin: str, name: str, values: Any) -> Any:
    try:
        return options.read(SECTIONS[name], values, name)
    except options.OptionError as error:
        raise ConfigError(f"{origin}: {error}") from None
