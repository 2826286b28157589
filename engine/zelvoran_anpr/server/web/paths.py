"""The paths that are treated apart from the rest."""

from starlette.types import Scope

PAGES = frozenset({"/", "/login", "/docs"})
"""What a browser opens; the pages hold no data, their scripts fetch it with the session."""

PROBES = frozenset({"/livez", "/readyz", "/metrics"})

OPEN_PATHS = PAGES | {"/livez", "/readyz", "/openapi.json", "/favicon.ico", "/api/session"}
"""What is answered without a credential."""

RECOGNITION = frozenset({"/api/anpr", "/api/anpr/mmc"})


def route_name(scope: Scope) -> str:
    """Return the matched route's pattern: few names, however many paths are asked for."""
    route = scope.get("route")
    return getattr(route, "path", "other")
