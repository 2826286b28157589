"""What /openapi.json says beyond the routes themselves: credentials, servers, headers."""

from typing import Any

from fastapi import FastAPI
from fastapi.openapi.utils import get_openapi
from fastapi.routing import APIRoute

from .paths import OPEN_PATHS
from .state import ServiceState

_RETRY_AFTER = {
    "description": "In how many seconds to ask again", "schema": {"type": "integer", "minimum": 0},
}  # fmt: skip
_REQUEST_ID = {
    "description": "Stands in the server's log as well; a client may choose it",
    "schema": {"type": "string"},
}
_BUSY = ("429", "503")


def operation_id(route: APIRoute) -> str:
    """Clients are generated from these names: they stay when a path or a text changes."""
    return route.name


def describe(app: FastAPI, state: ServiceState) -> None:
    """Let the application describe itself in full; made once, when it is first asked for."""

    def description() -> dict[str, Any]:
        if not app.openapi_schema:
            app.openapi_schema = _description(app, state)
        return app.openapi_schema

    app.openapi = description  # type: ignore[method-assign]


def _description(app: FastAPI, state: ServiceState) -> dict[str, Any]:
    text = get_openapi(
        title=app.title, version=app.version, description=app.description, routes=app.routes,
        servers=[{"url": "/", "description": "The server that this is read from"}],
    )  # fmt: skip
    for schema in text["components"]["schemas"].values():
        _mark_files(schema)
    text["components"]["securitySchemes"] = _schemes(state.sessions.cookie)
    needed = [{"token": []}, {"bearer": []}, {"session": []}]
    if not state.settings.server.require_token:
        needed.append({})  # programs of the same user on the same machine
    for path, operations in text["paths"].items():
        for operation in operations.values():
            operation["security"] = [{}] if path in OPEN_PATHS else needed
            _add_headers(operation["responses"])
    return text


def _mark_files(schema: Any) -> None:
    """Say in the older way, too, what is a file: most generators of clients know only that one."""
    for part in schema.values() if isinstance(schema, dict) else ():
        _mark_files(part)
    if isinstance(schema, dict) and schema.get("contentMediaType") == "application/octet-stream":
        schema["format"] = "binary"


def _schemes(cookie: str) -> dict[str, Any]:
    return {
        "token": {"type": "apiKey", "in": "header", "name": "X-ZV-ANPR-Token"},
        "bearer": {"type": "http", "scheme": "bearer"},
        "session": {"type": "apiKey", "in": "cookie", "name": cookie},
    }


def _add_headers(responses: dict[str, Any]) -> None:
    for status, response in responses.items():
        headers = response.setdefault("headers", {})
        headers["X-Request-ID"] = _REQUEST_ID
        if status in _BUSY:
            headers["Retry-After"] = _RETRY_AFTER
