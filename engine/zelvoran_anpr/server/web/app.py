"""Puts the application together and turns every failure into one line of JSON."""

from fastapi import FastAPI, Request
from fastapi.exceptions import RequestValidationError
from fastapi.responses import JSONResponse
from starlette.exceptions import HTTPException

from ..._version import __version__
from ..workers.errors import NotReady, PhotoRefused, PoolFull, ReadingFailed
from . import batch, management, probes, recognition, sign_in
from .answers import problem
from .body_limits import BodyLimits
from .departure import ClientLeft
from .description import describe, operation_id
from .gate import Gate
from .guard import Guard
from .methods import offered
from .pages import add_pages
from .paths import PAGES
from .state import ServiceState

_ROUTERS = (recognition.router, batch.router, management.router, probes.router, sign_in.router)


def create_app(state: ServiceState) -> FastAPI:
    """Return the ASGI application that serves `state`."""
    app = FastAPI(
        title="Zelvoran ANPR", version=__version__, docs_url=None, redoc_url=None,
        description="Reads number plates on photos. Nothing leaves this machine unless the "
        "cloud backend for make, model and colour is asked.",
        generate_unique_id_function=operation_id,
    )  # fmt: skip
    app.state.service = state
    for router in _ROUTERS:
        app.include_router(router)
    add_pages(app)
    describe(app, state)
    _add_handlers(app)
    app.add_middleware(BodyLimits, state=state)
    app.add_middleware(Gate, state=state)
    known = PAGES | {getattr(route, "path", "") for r in _ROUTERS for route in r.routes}
    app.add_middleware(Guard, state=state, known_paths=known)  # added last, met first
    return app


def _add_handlers(app: FastAPI) -> None:
    @app.exception_handler(HTTPException)
    async def refused(request: Request, error: HTTPException) -> JSONResponse:
        if error.status_code == 405:
            allowed = offered(app.routes, request.url.path)
            return problem(405, f"{request.method} is not offered here", allow=allowed)
        return problem(error.status_code, str(error.detail), **dict(error.headers or {}))

    @app.exception_handler(RequestValidationError)
    async def invalid(_: Request, error: RequestValidationError) -> JSONResponse:
        return problem(422, _first_problem(error))

    @app.exception_handler(PhotoRefused)
    async def no_image(_: Request, error: PhotoRefused) -> JSONResponse:
        return problem(error.status, str(error))

    @app.exception_handler(NotReady)
    async def not_ready(_: Request, error: NotReady) -> JSONResponse:
        return problem(503, str(error), **{"retry-after": "1"})

    @app.exception_handler(PoolFull)
    async def full(_: Request, error: PoolFull) -> JSONResponse:
        return problem(429, str(error), **{"retry-after": str(error.retry_after)})

    @app.exception_handler(ReadingFailed)
    async def lost(_: Request, error: ReadingFailed) -> JSONResponse:
        return problem(500, "The photo could not be read; the reason is in the server's log")

    @app.exception_handler(ClientLeft)
    async def left(_: Request, error: ClientLeft) -> JSONResponse:
        return problem(ClientLeft.STATUS, "The client closed the connection")

    @app.exception_handler(Exception)
    async def failed(_: Request, error: Exception) -> JSONResponse:
        return problem(500, "The request failed; the reason is in the server's log")


def _first_problem(error: RequestValidationError) -> str:
    first = error.errors()[0]
    place = ".".join(str(part) for part in first["loc"][1:])
    return f"{place}: {first['msg']}" if place else str(first["msg"])
