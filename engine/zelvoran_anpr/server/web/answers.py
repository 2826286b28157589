"""The shapes of the answers, as the API's own description shows them."""

from typing import Any

from fastapi.responses import JSONResponse
from pydantic import BaseModel, Field


class Problem(BaseModel):
    """What every refused or failed request is answered with."""

    success: bool = False
    error: str = Field(description="One line that says what to do", examples=["The image is empty"])


def problem(status: int, text: str, **headers: str) -> JSONResponse:
    """Return the answer to a request that is refused or failed."""
    return JSONResponse(Problem(error=text).model_dump(), status, headers)


PROBLEMS: dict[Any, dict[str, Any]] = {
    status: {"model": Problem} for status in (400, 401, 403, 408, 413, 422, 429, 431, 503)
}
"""Every route may be refused so: before it is met, or because of what was sent."""


class Plate(BaseModel):
    plate_text: str = Field(examples=["AYO9034"])
    confidence: float = Field(description="Of the text, in percent", examples=[97.1])
    bbox: list[float] = Field(
        description="Left, top, right, bottom in pixels of the upright photo",
        examples=[[463.0, 399.0, 563.0, 444.0]],
    )
    bbox_confidence: float = Field(description="Of the position, in percent", examples=[91.4])
    mmc_make: str = Field("", description="Vehicle make; empty when unknown or not asked for")
    mmc_model: str = ""
    mmc_color: str = ""


class Recognition(BaseModel):
    success: bool = True
    results: list[Plate]
    region: str = Field(description="The region that was read for", examples=["univ"])
    width: int = Field(description="Of the upright photo, in pixels", examples=[1280])
    height: int = Field(examples=[720])
    processing_sec: float = Field(
        description="From the complete upload to the answer", examples=[0.117]
    )
    mmc_error: str | None = Field(None, description="Why make, model and colour are missing")


class BatchItem(BaseModel):
    file: str = Field(description="As the client named it", examples=["car.jpg"])
    status: int = Field(description="What a request with this photo alone is answered with")
    success: bool
    answer: Recognition | None = None
    error: str | None = Field(None, description="Why there is no answer, in one line")


class Batch(BaseModel):
    success: bool = Field(True, description="The request was understood; see each photo's own")
    photos: list[BatchItem] = Field(description="In the order in which they were sent")


class HealthCheck(BaseModel):
    healthy: bool
    memory_mb: float
    waiting_or_running: int


class Health(BaseModel):
    status: str = Field(description='"ok", or "loading" until the models are warm')
    version: str
    sdk_version: str
    detector_version: str
    ocr_version: str
    region: str
    threads: int
    requests_served: int
    errors: int
    uptime: float = Field(description="Seconds since the start")
    mmc_enabled: bool
    mmc_available: bool
    health_check: HealthCheck | None = Field(None, description="Only when asked for")


class MmcStatus(BaseModel):
    available: bool
    backend: str
    mmc_calls_today: int
    mmc_daily_limit: int | str = Field(description="Calls, or unlimited")
    mmc_remaining: int | str = Field(description="Calls, or unlimited")
    error: str | None = None


class Region(BaseModel):
    default_region: str = Field(description="From the configuration")
    active_region: str = Field(description="Used now when a request names none")


class RegionChange(BaseModel):
    success: bool
    previous_region: str | None = None
    current_region: str | None = None
    error: str | None = None


class Regions(BaseModel):
    internal_groups: list[str]
    groups: list[dict[str, str]]
    countries: list[dict[str, str]]


class MmcChange(BaseModel):
    success: bool
    backend: str = Field(description="The backend in use now")
    previous_backend: str
    error: str | None = None


class RegionName(BaseModel):
    region: str = Field(
        description='Such as "korea", "euplus", "de" or "Germany"', max_length=100,
        examples=["korea"],
    )  # fmt: skip


class BackendName(BaseModel):
    backend: str = Field(description='"cloud" or "local"', max_length=100, examples=["cloud"])


class Token(BaseModel):
    token: str = Field(max_length=500)


class SignedIn(BaseModel):
    signed_in: bool


class RecentAnswer(BaseModel):
    requests: list[dict[str, Any]]
