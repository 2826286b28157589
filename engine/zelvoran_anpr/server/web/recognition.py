"""POST /api/anpr and /api/anpr/mmc: the plates on an uploaded photo."""

import asyncio
import datetime
import time
from typing import Annotated, Any

from fastapi import APIRouter, File, Form, HTTPException, Request, UploadFile

from .answers import PROBLEMS, Plate, Problem, Recognition
from .departure import unless_left
from .mmc_switch import MmcUnavailable
from .pictures import pictures
from .region import internal_name
from .state import ServiceState

BUSY: dict[Any, dict[str, Any]] = {status: {"model": Problem} for status in (429, 503, 504)}
_STAGES = {"unpack": "decoding", "detect": "detecting", "read": "reading"}
"""What a reading process calls the stages, and what the metrics do."""
Photo = Annotated[UploadFile, File(description="A JPEG, PNG, BMP or TIFF photo")]
RegionField = Annotated[str | None, Form(description="Region to read this photo for")]

router = APIRouter(tags=["recognition"], responses={**PROBLEMS, **BUSY})


@router.post("/api/anpr", summary="Read the plates on a photo")
async def read_plates(request: Request, image: Photo, region: RegionField = None) -> Recognition:
    state: ServiceState = request.app.state.service
    return await unless_left(request, recognise(state, image, region, with_mmc=False))


@router.post("/api/anpr/mmc", summary="Read the plates and recognise make, model and colour")
async def read_plates_and_vehicles(
    request: Request, image: Photo, region: RegionField = None
) -> Recognition:
    state: ServiceState = request.app.state.service
    return await unless_left(request, recognise(state, image, region, with_mmc=True))


async def recognise(
    state: ServiceState, image: UploadFile, region: str | None, with_mmc: bool
) -> Recognition:
    """Read one photo. Raises HTTPException, and what `failures` turns into answers."""
    state.readers.check_ready()
    name = region_of(state, region)
    photo = await image.read()
    begun = time.monotonic()
    limits = state.settings.limits
    reading, pixels = await _timed(
        state.readers.read(photo, internal_name(name), with_mmc, limits.request_seconds)
    )
    _observe(state, reading.get("seconds", {}), time.monotonic() - begun)
    plates = [_plate(record) for record in reading["plates"]]
    vehicles = pictures(reading["crops"], pixels)
    problem = await _add_vehicles(state, vehicles, plates) if vehicles else None
    answer = Recognition(
        results=plates, region=name, width=reading["width"], height=reading["height"],
        processing_sec=round(time.monotonic() - begun, 4), mmc_error=problem,
    )  # fmt: skip
    _remember(state, image.filename or "", answer)
    return answer


def _observe(state: ServiceState, seconds: dict[str, float], whole: float) -> None:
    """What the reader does not account for, the photo has waited for it."""
    timings = {stage: seconds[name] for name, stage in _STAGES.items() if name in seconds}
    state.metrics.observe_timings({**timings, "waiting": max(0, whole - sum(timings.values()))})


async def _timed(call: Any) -> Any:
    try:
        return await call
    except asyncio.TimeoutError:
        raise HTTPException(504, "Reading the photo took too long") from None


async def _add_vehicles(
    state: ServiceState, pictures: list[Any], plates: list[Plate]
) -> str | None:
    """Fill in what is known of each vehicle; return why something is missing, or None."""
    seconds = state.settings.limits.mmc_seconds
    calls = (
        state.mmc_workers.run(state.mmc.recognise, picture, seconds=seconds) for picture in pictures
    )
    problem = None
    vehicles = await asyncio.gather(*calls, return_exceptions=True)
    for plate, vehicle in zip(plates, vehicles, strict=True):
        if isinstance(vehicle, dict):
            plate.mmc_make, plate.mmc_model = vehicle["make"], vehicle["model"]
            plate.mmc_color = vehicle["color"]
        elif isinstance(vehicle, asyncio.TimeoutError):
            problem = "Recognising the vehicle took too long"
        elif isinstance(vehicle, MmcUnavailable):
            problem = str(vehicle)
        else:
            raise vehicle
    return problem


def region_of(state: ServiceState, given: str | None) -> str:
    if not given:
        return state.region.active
    try:
        return state.region.known(given)
    except ValueError as error:
        raise HTTPException(422, str(error)) from None


def _plate(record: dict[str, Any]) -> Plate:
    return Plate(
        plate_text=record["ocr"],
        confidence=round(float(record["ocr_conf"]) * 100, 2),
        bbox=[round(float(side), 2) for side in record["ltrb"]],
        bbox_confidence=round(float(record["ltrb_conf"]) * 100, 2),
    )


def _remember(state: ServiceState, name: str, answer: Recognition) -> None:
    state.metrics.count_recognition(len(answer.results))
    state.recent.add(
        {
            "time": datetime.datetime.now(datetime.timezone.utc).isoformat(timespec="seconds"),
            "file": name[:200].encode("utf-8", "replace").decode(),
            "plates": [plate.plate_text for plate in answer.results],
            "region": answer.region,
            "processing_sec": answer.processing_sec,
        }
    )
