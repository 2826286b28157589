"""How many files and connections this process may hold open."""

import contextlib
import logging
import sys

from .crowd import LOBBY

_log = logging.getLogger("zelvoran_anpr.server")

BACKLOG = 128
"""Connections that are taken in one go, before the first of them is looked at."""

_OTHER = 128  # log, models, pages, child processes


def raised_limit() -> int | None:
    """Raise this process' limit as far as it may be; return it, or None where there is none."""
    if sys.platform == "win32":
        return None
    import resource

    _, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    if hard == resource.RLIM_INFINITY:
        hard = 1 << 20
    with contextlib.suppress(ValueError, OSError):  # some systems offer less than they tell
        resource.setrlimit(resource.RLIMIT_NOFILE, (hard, hard))
    return resource.getrlimit(resource.RLIMIT_NOFILE)[0]


def affordable_connections(wanted: int) -> int:
    """Return how many of the wanted connections there are descriptors for; tells of fewer."""
    limit = raised_limit()
    affordable = wanted if limit is None else min(wanted, limit - LOBBY - BACKLOG - _OTHER)
    if affordable < wanted:
        _log.warning("limits.connections: %d, for this process may open %d files (ulimit -n)",
                     max(affordable, 1), limit)  # fmt: skip
    return max(affordable, 1)
