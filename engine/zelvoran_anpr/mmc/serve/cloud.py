"""The remote backend: one HTTPS call per vehicle to a service that the configuration names."""

from pathlib import Path
from typing import Any

import numpy as np

from ..errors import MmcError
from .cloud_client import CloudClient, NotSent
from .crop import jpeg_of
from .gate import Gate
from .settings import CloudSettings
from .usage import DailyCounter
from .vehicle import clean

_LONGEST_SIDE = 1024


class CloudBackend:
    """Off until `mmc.cloud.url` is set; counts every call against the daily limit."""

    name = "cloud"

    def __init__(self, settings: CloudSettings, data_dir: Path | None) -> None:
        self._settings = settings
        self._counter = DailyCounter(self.name, data_dir, settings.daily_limit)
        self._gate = Gate()
        self._error = "the cloud backend is not running"
        self._client = CloudClient(settings)

    def start(self) -> None:
        try:
            self._client.require_configured()
            self._client.require_reachable()
        except MmcError as error:
            self._error = str(error)
            raise
        self._error = ""
        self._gate.open()

    def stop(self) -> None:
        self._gate.shut(self._settings.timeout + 5)
        self._error = self._error or "the cloud backend is not running"

    def available(self) -> bool:
        return not self._error

    def status(self) -> dict[str, Any]:
        state = {"available": self.available(), "backend": self.name, **self._counter.status()}
        return {**state, "error": self._error} if self._error else state

    def recognise(self, vehicle_rgb: np.ndarray) -> dict[str, str]:
        with self._gate.passing():
            jpeg = jpeg_of(vehicle_rgb, _LONGEST_SIDE)
            self._counter.take()
            try:
                return clean(self._client.ask(jpeg))
            except NotSent:
                self._counter.give_back()
                raise
