"""Which methods a path is offered with."""

from collections.abc import Sequence

from starlette.routing import BaseRoute, Match, Mount
from starlette.types import Scope

_METHODS = ("DELETE", "GET", "PATCH", "POST", "PUT")


def as_routed(scope: Scope) -> Scope:
    """Return a scope to find a route for: HEAD is answered like GET, by the same route.

    The server leaves the body out.
    """
    return {**scope, "method": "GET" if scope["method"] == "HEAD" else scope["method"]}


def offered(routes: Sequence[BaseRoute], path: str) -> str:
    """Return the methods that a path is offered with, as an Allow header tells them."""
    methods = {method for method in _METHODS if _is_offered(routes, path, method)}
    if "GET" in methods:
        methods.add("HEAD")
    return ", ".join(sorted(methods))


def _is_offered(routes: Sequence[BaseRoute], path: str, method: str) -> bool:
    # Routes are asked one by one: how they nest, and keep their methods, is the framework's affair.
    scope = {"type": "http", "method": method, "path": path, "root_path": "", "headers": []}
    matching = (route for route in routes if route.matches(scope)[0] is Match.FULL)
    # A mount takes every method; what is mounted here are files, which can only be fetched.
    return any(method == "GET" or not isinstance(route, Mount) for route in matching)
