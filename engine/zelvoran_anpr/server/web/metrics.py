"""Counters of the service, also in the text form that Prometheus reads."""

import os
import platform
import time
from collections.abc import Mapping
from typing import Any

import psutil
from prometheus_client import CollectorRegistry, Counter, Gauge, Histogram, ProcessCollector
from prometheus_client import generate_latest as _text

from ..._version import __version__

_SECONDS = (0.01, 0.025, 0.05, 0.1, 0.25, 0.5, 1, 2.5, 5, 10, 30)
STAGES = ("waiting", "decoding", "detecting", "reading")
"""What becomes of a photo, in this order."""
_REASONS = {
    400: "invalid", 404: "path", 405: "method", 408: "slow", 413: "large", 422: "invalid",
    429: "busy", 499: "left", 503: "loading", 504: "late",
}  # fmt: skip


class Metrics:
    """Counts in a registry of its own, so that several servers in one process stay apart."""

    def __init__(self, state: Any) -> None:
        registry = self._registry = CollectorRegistry()
        ProcessCollector(registry=registry)
        self._state = state
        self.requests_served = 0
        """Recognitions answered with a result."""
        self.errors = 0
        """Requests that failed here; being busy or still loading is no failure."""
        self._answers = Counter(
            "anpr_http_requests", "Answers by route and status", ["method", "route", "status"],
            registry=registry,
        )  # fmt: skip
        self._seconds = Histogram(
            "anpr_http_request_seconds", "Time to answer", ["route"], buckets=_SECONDS,
            registry=registry,
        )  # fmt: skip
        self._bytes_in = Counter(
            "anpr_http_request_bytes", "Bytes of request bodies that were taken in",
            registry=registry,
        )  # fmt: skip
        self._refusals = Counter(
            "anpr_http_refusals", "Requests that were not served, by reason", ["reason"],
            registry=registry,
        )  # fmt: skip
        self._stages = Histogram(
            "anpr_stage_seconds", "Time of one photo in each stage", ["stage"], buckets=_SECONDS,
            registry=registry,
        )  # fmt: skip
        build = Gauge("anpr_build_info", "What runs; always 1", list(_build()), registry=registry)
        build.labels(**_build()).set(1)
        self._plates = Counter("anpr_plates", "Plates read", registry=registry)
        held = Gauge("anpr_pool_held", "Calls that run or wait", ["pool"], registry=registry)
        held.labels("reader").set_function(lambda: state.readers.held)
        held.labels("mmc").set_function(lambda: state.mmc_workers.held)
        ready = Gauge("anpr_ready", "1 when the models are warm", registry=registry)
        ready.set_function(lambda: float(state.engine.ready))
        uptime = Gauge("anpr_uptime_seconds", "Time since the start", registry=registry)
        uptime.set_function(lambda: time.monotonic() - state.started)

    def count_answer(self, method: str, route: str, status: int, seconds: float) -> None:
        if status >= 500 and status != 503:
            self.errors += 1
        self._answers.labels(method, route, str(status)).inc()
        self._seconds.labels(route).observe(seconds)

    def count_bytes_in(self, count: int) -> None:
        self._bytes_in.inc(count)

    def count_refusal(self, reason: str | None, status: int) -> None:
        self._refusals.labels(reason or _REASONS.get(status, "failed")).inc()

    def observe_timings(self, timings: Mapping[str, float]) -> None:
        """Take in how many seconds each stage of one photo took."""
        for stage in STAGES:
            if stage in timings:
                self._stages.labels(stage).observe(timings[stage])

    def count_recognition(self, plates: int) -> None:
        self.requests_served += 1
        self._plates.inc(plates)

    def memory_mb(self) -> float:
        """Return the resident memory of this process and its readers in MiB."""
        return round(sum(map(_resident, [os.getpid(), *self._state.readers.pids])) / 2**20, 1)

    def text(self) -> bytes:
        return _text(self._registry)


def _resident(pid: int) -> int:
    try:
        return psutil.Process(pid).memory_info().rss
    except psutil.Error:  # it is being replaced
        return 0


def _build() -> dict[str, str]:
    from importlib import metadata

    runtime = next(
        (d for d in metadata.distributions() if d.name.lower().startswith("onnxruntime")), None
    )
    return {
        "version": __version__,
        "python": platform.python_version(),
        "runtime": f"{runtime.name} {runtime.version}" if runtime else "",
    }
