"""The `mmc` section of the server configuration, checked; a wrong value names its key."""

import os
from collections.abc import Mapping
from dataclasses import dataclass, replace
from typing import Any, TypeVar

from ...options import OptionError, number, option, read, text_or_nothing, whole
from ..errors import MmcError
from ..places import CLOUD_KEY_ENV

_Kind = TypeVar("_Kind")


@dataclass(frozen=True)
class LocalSettings:
    """`mmc.local`: times in seconds; None leaves a choice to llama-server or to the set-up."""

    server_bin: str | None = option(None, text_or_nothing)
    llm: str | None = option(None, text_or_nothing)
    mmproj: str | None = option(None, text_or_nothing)
    context: int = option(4096, whole(512))
    parallel: int = option(1, whole(1))
    threads: int | None = option(None, whole(0))
    gpu_layers: int | None = option(None, whole(0))
    start_timeout: float = option(90.0, number(1))
    request_timeout: float = option(60.0, number(1))


def _key(value: Any) -> str | None:
    return None if isinstance(value, int) else text_or_nothing(value)  # digits alone are a number


@dataclass(frozen=True)
class CloudSettings:
    """`mmc.cloud`: `timeout` in seconds, `daily_limit` in calls."""

    url: str = option("", text_or_nothing)
    api_key: str = option("", _key)
    daily_limit: int = option(500, whole(0))
    timeout: float = option(15.0, number(0.1))


def local_settings(config: Mapping[str, Any]) -> LocalSettings:
    return _checked(LocalSettings, config, "local")


def cloud_settings(config: Mapping[str, Any]) -> CloudSettings:
    found = _checked(CloudSettings, config, "cloud")
    key = os.environ.get(CLOUD_KEY_ENV) or str(found.api_key).strip()
    return replace(found, url=found.url.strip(), api_key=key)


def _checked(kind: type[_Kind], config: Mapping[str, Any], name: str) -> _Kind:
    try:
        return read(kind, config.get(name), f"mmc.{name}")
    except OptionError as error:
        raise MmcError(f"server_config.yaml: {error}") from None
