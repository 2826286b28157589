"""The paths that are treated apart from the rest."""

from collections.abc import Collection

from starlette.types import Scope

PAGES = frozenset({"/", "/login", "/docs"})
"""What a browser opens; the pages hold no data, their scripts fetch it with the session."""

PROBES = frozenset({"/livez", "/readyz", "/metrics"})

OPEN_PATHS = PAGES | {"/livez", "/readyz", "/openapi.json", "/favicon.ico", "/api/session"}
"""What is answered without a credential."""

RECOGNITION = frozenset({"/api/anpr", "/api/anpr/mmc", "/api/anpr/batch"})


def route_name(scope: Scope, known: Collection[str]) -> str:
    """Return the matched route's pattern: few names, however many paths are asked for.

    What is refused before a route is looked for counts for the one it asked for.
    """
    route = scope.get("route")
    if route is not None:
        return getattr(route, "path", "other")
    return scope["path"] if scope["path"] in known else "other"
