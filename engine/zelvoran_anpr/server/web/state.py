"""What all requests of one server share."""

import time

from ..config.settings import Settings
from .engine import Engine
from .metrics import Metrics
from .mmc_switch import MmcSwitch
from .pool import BoundedPool
from .recent import RecentRequests
from .region import RegionChoice
from .session import Sessions


class ServiceState:
    """The parts of a running server, and its way from loading to ready."""

    def __init__(self, settings: Settings, token: str) -> None:
        self.settings = settings
        self.started = time.monotonic()
        self.region = RegionChoice(settings.server.region)
        self.engine = Engine(settings)
        self.mmc = MmcSwitch(settings)
        limits = settings.limits
        self.readers = BoundedPool(settings.server.threads, limits.queue, "reader")
        self.mmc_workers = BoundedPool(settings.mmc.threads, limits.queue, "mmc")
        self.metrics = Metrics(self)
        self.recent = RecentRequests()
        self.sessions = Sessions(token)

    def load(self) -> None:
        """Make the engine ready, then begin with the vehicle recogniser. Raises ValueError."""
        self.engine.load(self.region.active)
        self.mmc.start_later()

    def close(self) -> None:
        """Return when everything that was started has ended."""
        self.readers.close()
        self.mmc_workers.close()
        self.mmc.stop()
