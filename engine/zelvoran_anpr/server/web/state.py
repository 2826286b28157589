"""What all requests of one server share."""

import asyncio
import time
from typing import Any

from ..config.paths import run_dir
from ..config.settings import Settings
from ..workers.pool import ReaderPool
from .credentials import Credentials
from .ended_sessions import EndedSessions
from .forwarded import TrustedProxies
from .metrics import Metrics
from .mmc_switch import MmcSwitch
from .pool import BoundedPool
from .recent import RecentRequests
from .region import RegionChoice, internal_name
from .session import Sessions
from .throttle import Allowance, Underway, failed_sign_ins

_MINUTE = 60


class ServiceState:
    """The parts of a running server, and its way from loading to ready."""

    def __init__(self, settings: Settings, token: str) -> None:
        self.settings = settings
        self.started = time.monotonic()
        self.draining = False
        """Whether the server is about to end: whoever chooses among servers takes another."""
        self.region = RegionChoice(settings.server.region)
        self.mmc = MmcSwitch(settings)
        limits = settings.limits
        self.readers = ReaderPool(
            _reader_options(settings, internal_name(self.region.active)),
            settings.server.threads, limits.queue, limits.request_seconds,
        )  # fmt: skip
        self.mmc_workers = BoundedPool(settings.mmc.threads, limits.queue, "mmc")
        self.metrics = Metrics(self)
        self.recent = RecentRequests()
        self.proxies = TrustedProxies(settings.server.trusted_proxies)
        self.credentials = Credentials(token)
        self.failed_sign_ins = failed_sign_ins()
        rate = limits.client_requests
        self.requests_of_clients = Allowance(rate, _MINUTE) if rate else None
        self.photos_of_clients = Underway(limits.client_photos)
        port = settings.server.port
        ended = EndedSessions(run_dir() / f"ended-sessions-{port}.json")
        self.sessions = Sessions(self.credentials, port, ended)

    @property
    def engine(self) -> ReaderPool:
        """For those who ask only whether it is ready."""
        return self.readers

    async def load(self) -> None:
        """Make the readers ready, then begin with the vehicle recogniser. Raises WorkerLost."""
        await self.readers.start()
        self.mmc.start_later()

    async def close(self) -> None:
        """Return when the readers have ended and the vehicle recogniser was told to."""
        await self.readers.close()
        await asyncio.to_thread(self._close_mmc)

    def _close_mmc(self) -> None:
        self.mmc_workers.close()
        self.mmc.stop()


def _reader_options(settings: Settings, region: str) -> dict[str, Any]:
    server, limits = settings.server, settings.limits
    return {
        "detector_model": server.detector_model, "ocr_model": server.ocr_model,
        "backend": server.backend, "region": region,
        "max_pixels": int(limits.megapixels * 1e6), "most_bytes": int(limits.unpack_mb * 1e6),
    }  # fmt: skip
