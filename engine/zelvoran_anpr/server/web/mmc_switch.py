"""The make, model and colour recogniser in use, and the change to another one."""

import logging
import re
import threading
from concurrent.futures import Future
from typing import Any

from ..config.config_file import ConfigError, load_config
from ..config.paths import get_config_dir
from ..config.settings import Settings

_log = logging.getLogger("zelvoran_anpr.server")
_BACKENDS = ("cloud", "local")
_SWITCHED_OFF = "MMC is switched off"
_STOP_PATIENCE_SECONDS = 5
_CHANGES = 2  # one under way and one that waits for it
_FOLDERS = re.compile(r"(?<![^\s'\"(])(?:[A-Za-z]:)?[\\/](?:[^\\/\s:;,'\"()]+[\\/])+")
_NO_QUOTA = {"mmc_calls_today": 0, "mmc_daily_limit": 0, "mmc_remaining": 0}


class MmcUnavailable(Exception):
    """No vehicle can be recognised now; the text is one line."""


class MmcSwitch:
    """Holds at most one running backend; thread-safe."""

    def __init__(self, settings: Settings) -> None:
        self.enabled: bool = settings.mmc.enabled
        self.name: str = settings.mmc.backend
        self._source = settings.source
        self._running_with: dict[str, Any] = {}
        self._backend: Any = None
        self._problem: str | None = None if self.enabled else _SWITCHED_OFF
        self._changing = threading.Lock()
        self._places = threading.BoundedSemaphore(_CHANGES)
        self._stopped = False

    @property
    def available(self) -> bool:
        backend = self._backend
        return bool(backend and backend.available())

    def start_later(self) -> None:
        """Start the configured backend in the background; a failure shows in `status`."""
        if self.enabled:
            self.change(self.name)

    def change(self, name: str) -> "Future[str | None]":
        """Start a backend and then stop the one before; the result is None, or what went wrong.

        After a failure the one before goes on. What the configuration switches off stays off.
        """
        done: Future[str | None] = Future()
        done.set_running_or_notify_cancel()  # a caller that leaves cancels nothing
        if name not in _BACKENDS:
            done.set_result("The MMC backend must be 'cloud' or 'local'")
        elif not self._places.acquire(blocking=False):
            done.set_result("The MMC backend is being changed already; try again in a moment")
        else:  # in a thread that ends with the process, whatever a backend waits for
            threading.Thread(target=self._work, args=(name, done), daemon=True).start()
        return done

    def _work(self, name: str, done: "Future[str | None]") -> None:
        with self._changing:
            try:
                done.set_result(self._changed(name))
            except BaseException as error:  # noqa: BLE001  the caller's to handle
                done.set_exception(error)
            finally:
                self._places.release()

    def _changed(self, name: str) -> str | None:
        problem = self._start(name)
        if problem:
            _log.info("MMC backend %s: %s", name, problem)
            problem = _without_folders(problem)
            if self._backend is None:
                self._problem = problem
        return problem

    def status(self) -> dict[str, Any]:
        """Return `available`, `backend`, the quota keys, and `error` when there is one."""
        backend = self._backend
        if backend is not None:
            status = {**_NO_QUOTA, **backend.status()}
            return {key: _without_folders(text) for key, text in status.items()}
        status = {"available": False, "backend": self.name, **_NO_QUOTA}
        return {**status, "error": self._problem or "MMC is starting"}

    def recognise(self, vehicle: Any) -> dict[str, str]:
        """Return make, model and color of a vehicle (height x width x RGB, uint8).

        Raises MmcUnavailable.
        """
        from ...mmc import MmcError

        while True:
            backend = self._backend
            if backend is None or not backend.available():
                raise MmcUnavailable(self.status().get("error") or "MMC is not available")
            try:
                return backend.recognise(vehicle)
            except MmcError as error:
                # One that was replaced a moment ago: the request belongs to its successor.
                if backend is self._backend:
                    raise MmcUnavailable(_without_folders(str(error))) from None

    def stop(self) -> None:
        """Stop the backend and return when it has ended."""
        self._stopped = True
        # A backend that is still starting is let go: it ends with this process.
        unhurried = self._changing.acquire(timeout=_STOP_PATIENCE_SECONDS)
        backend, self._backend = self._backend, None
        if backend is not None:
            backend.stop()
        if unhurried:
            self._changing.release()

    def _start(self, name: str) -> str | None:
        from ...mmc import MmcError, create_backend

        try:
            # Read anew: whoever asks for a change may have changed the settings as well.
            config = {**load_config(self._source).get("mmc", {}), "backend": name}
            if config.get("enabled") is False:
                return f"{_SWITCHED_OFF}; to switch it on: zv-anpr mmc-backend {name}"
            if self.available and config == self._running_with:
                return None
            backend = create_backend(config, get_config_dir() / "mmc")
            backend.start()
            if self._stopped:
                backend.stop()
        except (MmcError, ConfigError, ImportError, OSError) as error:
            return str(error)
        before, self._backend = self._backend, backend
        self.name, self.enabled, self._problem = name, True, None
        self._running_with = config
        _log.info("MMC backend %s started", name)
        if before is not None:
            before.stop()
        return None


def _without_folders(value: Any) -> Any:
    """Of a text, without the folders of the paths in it: they are no business of a client's."""
    return _FOLDERS.sub("", value) if isinstance(value, str) else value
