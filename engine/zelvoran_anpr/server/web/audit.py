"""One line in the log for every change: who made it, what it was before and is now."""

import logging
from typing import Any

from starlette.requests import Request

from .caller import caller_of

_log = logging.getLogger("zelvoran_anpr.audit")


def record_change(request: Request, what: str, before: Any, after: Any) -> None:
    caller = caller_of(request)
    fields = {
        "what": what, "before": before, "after": after, "caller": caller.name,
        "client": caller.address, "request_id": caller.request_id,
    }  # fmt: skip
    _log.info(
        "%s: %r -> %r by %s from %s id=%s",
        what, before, after, caller.name, caller.address, caller.request_id,
        extra={"fields": fields},
    )  # fmt: skip


def record_event(request: Request, what: str) -> None:
    """The same for what has no before and after."""
    caller = caller_of(request)
    fields = {"what": what, "client": caller.address, "request_id": caller.request_id}
    _log.info("%s from %s id=%s", what, caller.address, caller.request_id, extra={"fields": fields})
