"""What supervisors and monitoring ask for."""

from fastapi import APIRouter, Request
from fastapi.responses import PlainTextResponse, Response

from .state import ServiceState

router = APIRouter(tags=["monitoring"])


@router.get("/livez", summary="Answers as long as the process works",
            response_class=PlainTextResponse)  # fmt: skip
async def livez() -> str:
    return "ok\n"


@router.get("/readyz", summary="Answers 200 once the models are warm, 503 before",
            response_class=PlainTextResponse,
            responses={503: {"description": "Still loading"}})  # fmt: skip
async def readyz(request: Request) -> PlainTextResponse:
    state: ServiceState = request.app.state.service
    if state.engine.ready:
        return PlainTextResponse("ok\n")
    return PlainTextResponse("loading\n", 503, {"retry-after": "1"})


@router.get("/metrics", summary="Counters in the Prometheus text format",
            response_class=PlainTextResponse)  # fmt: skip
async def metrics(request: Request) -> Response:
    state: ServiceState = request.app.state.service
    return Response(state.metrics.text(), media_type="text/plain; version=0.0.4; charset=utf-8")
