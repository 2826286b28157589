"""What supervisors and monitoring ask for."""

from typing import Any

from fastapi import APIRouter, Request
from fastapi.responses import PlainTextResponse, Response

from .answers import PROBLEMS
from .state import ServiceState

_TEXT = {"content": {"text/plain": {"schema": {"type": "string"}}}}
_ANSWERS: dict[Any, dict[str, Any]] = {200: _TEXT, **PROBLEMS}
# A class for plain text would have the refusals described as plain text as well.
router = APIRouter(tags=["monitoring"], responses=_ANSWERS, default_response_class=Response)


@router.get("/livez", summary="Answers as long as the process works")
async def livez() -> Response:
    return PlainTextResponse("ok\n")


@router.get("/readyz", summary="Answers 200 while photos are read, else 503",
            responses={503: {"description": "Loading, stuck or stopping", **_TEXT}})  # fmt: skip
async def readyz(request: Request) -> Response:
    state: ServiceState = request.app.state.service
    if state.draining:
        return PlainTextResponse("stopping\n", 503)
    if state.readers.ready and not state.readers.stuck:
        return PlainTextResponse("ok\n")
    text = "stuck\n" if state.readers.ready else "loading\n"
    return PlainTextResponse(text, 503, {"retry-after": "1"})


@router.get("/metrics", summary="Counters in the Prometheus text format")
async def metrics(request: Request) -> Response:
    state: ServiceState = request.app.state.service
    return Response(state.metrics.text(), media_type="text/plain; version=0.0.4; charset=utf-8")
