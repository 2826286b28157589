"""The state of the service, its region and its recogniser of vehicles."""

import asyncio
import time
from typing import Annotated

from fastapi import APIRouter, Query, Request

from ..._version import __version__
from . import region as regions
from .answers import (
    PROBLEMS,
    BackendName,
    Health,
    HealthCheck,
    MmcChange,
    MmcStatus,
    RecentAnswer,
    Region,
    RegionChange,
    RegionName,
    Regions,
)
from .audit import record_change
from .departure import unless_left
from .state import ServiceState

_SDK_VERSION = "v17"
router = APIRouter(tags=["management"], responses=PROBLEMS)


def _state(request: Request) -> ServiceState:
    return request.app.state.service


@router.get("/api/health", summary="State of the service", response_model_exclude_none=True)
async def health(request: Request, detailed: bool = False) -> Health:
    state = _state(request)
    server, metrics = state.settings.server, state.metrics
    return Health(
        status="ok" if state.engine.ready else "loading",
        version=__version__,
        sdk_version=_SDK_VERSION,
        detector_version=server.detector_model,
        ocr_version=server.ocr_model,
        region=state.region.active,
        threads=state.readers.threads,
        requests_served=metrics.requests_served,
        errors=metrics.errors,
        uptime=round(time.monotonic() - state.started, 3),
        mmc_enabled=state.mmc.enabled,
        mmc_available=state.mmc.available,
        health_check=_health_check(state) if detailed else None,
    )


def _health_check(state: ServiceState) -> HealthCheck:
    return HealthCheck(
        healthy=state.engine.ready,
        memory_mb=state.metrics.memory_mb(),
        waiting_or_running=state.readers.held,
    )


@router.get("/api/mmc/status", summary="State and quota of make, model and colour",
            response_model_exclude_none=True)  # fmt: skip
async def mmc_status(request: Request) -> MmcStatus:
    return MmcStatus(**await asyncio.to_thread(_state(request).mmc.status))


@router.put("/api/mmc/backend", summary="Change the recogniser of make, model and colour",
            response_model_exclude_none=True)  # fmt: skip
async def change_mmc_backend(request: Request, wanted: BackendName) -> MmcChange:
    mmc = _state(request).mmc
    previous = mmc.name
    change = asyncio.wrap_future(mmc.change(wanted.backend.lower()))
    problem = await unless_left(request, change)
    if problem is None:
        record_change(request, "mmc.backend", previous, mmc.name)
    return MmcChange(
        success=problem is None, backend=mmc.name, previous_backend=previous, error=problem
    )


@router.get("/api/region", summary="Region that plates are read for")
async def region(request: Request) -> Region:
    choice = _state(request).region
    return Region(default_region=choice.default, active_region=choice.active)


@router.put("/api/region", summary="Change the region until the server ends",
            response_model_exclude_none=True)  # fmt: skip
async def change_region(request: Request, wanted: RegionName) -> RegionChange:
    choice = _state(request).region
    try:
        previous = choice.change(wanted.region)
    except ValueError as error:
        return RegionChange(success=False, error=str(error))
    record_change(request, "region", previous, choice.active)
    return RegionChange(success=True, previous_region=previous, current_region=choice.active)


@router.get("/api/regions", summary="Regions that are understood")
async def all_regions() -> Regions:
    groups = regions.groups()
    codes = [group["code"] for group in groups]
    return Regions(internal_groups=codes, groups=groups, countries=regions.countries())


@router.get("/api/recent", summary="The last recognitions, newest first")
async def recent(request: Request, count: Annotated[int, Query(ge=1, le=100)] = 20) -> RecentAnswer:
    return RecentAnswer(requests=_state(request).recent.newest(count))
