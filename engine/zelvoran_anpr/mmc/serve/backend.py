"""What a make/model/colour backend can do, and which one the configuration asks for."""

from collections.abc import Mapping
from pathlib import Path
from typing import TYPE_CHECKING, Any, Protocol

from ..errors import MmcError

if TYPE_CHECKING:
    import numpy as np


class MmcBackend(Protocol):
    """Thread-safe. `name` is "cloud" or "local"."""

    name: str

    def start(self) -> None:
        """Block until usable; raises MmcError."""

    def stop(self) -> None:
        """Wait for the requests under way, then end; may be called more than once."""

    def available(self) -> bool: ...

    def status(self) -> dict[str, Any]:
        """available, backend, mmc_calls_today, mmc_daily_limit, mmc_remaining; error if any."""

    def recognise(self, vehicle_rgb: "np.ndarray") -> dict[str, str]:
        """make, model and color of an HxWx3 uint8 RGB crop, "" for unknown; raises MmcError."""


def create_backend(mmc_config: Mapping[str, Any], data_dir: Path | None) -> MmcBackend:
    """The backend that the `mmc` section names, not yet started; raises MmcError.

    `data_dir` keeps the call counter and llama-server's log; None keeps neither.
    """
    name = mmc_config.get("backend") or "cloud"
    if name == "local":
        from .local import LocalBackend
        from .settings import local_settings

        return LocalBackend(local_settings(mmc_config), data_dir)
    if name == "cloud":
        from .cloud import CloudBackend
        from .settings import cloud_settings

        return CloudBackend(cloud_settings(mmc_config), data_dir)
    raise MmcError(f"server_config.yaml: mmc.backend must be cloud or local, not {name!r}")
