"""The `mmc` section of the server configuration, checked; a wrong value names its key."""

import os
from collections.abc import Mapping
from dataclasses import dataclass
from typing import Any

from ..errors import MmcError
from ..places import CLOUD_KEY_ENV


@dataclass(frozen=True)
class LocalSettings:
    """`mmc.local`: times in seconds; None leaves a choice to llama-server or to the set-up."""

    server_bin: str | None = None
    llm: str | None = None
    mmproj: str | None = None
    context: int = 4096
    parallel: int = 1
    threads: int | None = None
    gpu_layers: int | None = None
    start_timeout: float = 90.0
    request_timeout: float = 60.0


@dataclass(frozen=True)
class CloudSettings:
    """`mmc.cloud`: `timeout` in seconds, `daily_limit` in calls."""

    url: str = ""
    api_key: str = ""
    daily_limit: int = 500
    timeout: float = 15.0


def local_settings(config: Mapping[str, Any]) -> LocalSettings:
    read = _Section(config, "local")
    return LocalSettings(
        server_bin=read.text("server_bin") or None,
        llm=read.text("llm") or None,
        mmproj=read.text("mmproj") or None,
        context=int(read.number("context", 4096, least=512)),
        parallel=int(read.number("parallel", 1, least=1)),
        threads=read.count("threads"),
        gpu_layers=read.count("gpu_layers"),
        start_timeout=read.number("start_timeout", 90.0, least=1),
        request_timeout=read.number("request_timeout", 60.0, least=1),
    )


def cloud_settings(config: Mapping[str, Any]) -> CloudSettings:
    read = _Section(config, "cloud")
    return CloudSettings(
        url=read.text("url"),
        api_key=os.environ.get(CLOUD_KEY_ENV) or read.text("api_key"),
        daily_limit=int(read.number("daily_limit", 500, least=0)),
        timeout=read.number("timeout", 15.0, least=0.1),
    )


class _Section:
    """One mapping below `mmc`; null and absent both mean the default."""

    def __init__(self, config: Mapping[str, Any], name: str) -> None:
        found = config.get(name) or {}
        if not isinstance(found, Mapping):
            raise MmcError(f"server_config.yaml: mmc.{name} must be a group of settings")
        self._values, self._name = found, name

    def _wrong(self, key: str, wanted: str) -> MmcError:
        value = self._values[key]
        return MmcError(
            f"server_config.yaml: mmc.{self._name}.{key} must be {wanted}, not {value!r}"
        )

    def text(self, key: str) -> str:
        value = self._values.get(key)
        if value is not None and not isinstance(value, (str, int)):
            raise self._wrong(key, "text")
        return "" if value is None else str(value).strip()

    def number(self, key: str, default: float, least: float) -> float:
        value = self._values.get(key)
        if value is None:
            return default
        if isinstance(value, bool) or not isinstance(value, (int, float)) or not value >= least:
            raise self._wrong(key, f"a number of at least {least:g}")
        return value

    def count(self, key: str) -> int | None:
        return None if self._values.get(key) is None else int(self.number(key, 0, least=0))
