"""The pages for a browser and the files they load; nothing comes from elsewhere."""

from pathlib import Path

import fastapi_offline
from fastapi import FastAPI
from fastapi.responses import FileResponse
from starlette.staticfiles import StaticFiles

_DASHBOARD = Path(__file__).parent.parent / "dashboard"
_SWAGGER = Path(fastapi_offline.__file__).parent / "static"
_PAGES = {"/": "index.html", "/login": "login.html", "/docs": "docs.html"}


def add_pages(app: FastAPI) -> None:
    """Add the dashboard, its sign-in page and the interactive description of the API."""
    for path, name in _PAGES.items():
        app.add_api_route(path, _page(_DASHBOARD / name), include_in_schema=False)
    app.add_api_route("/favicon.ico", _page(_DASHBOARD / "icon.svg"), include_in_schema=False)
    app.mount("/static/swagger", StaticFiles(directory=_SWAGGER))
    app.mount("/static", StaticFiles(directory=_DASHBOARD))


def _page(file: Path):
    async def page() -> FileResponse:
        return FileResponse(file, headers={"cache-control": "no-cache"})

    return page
