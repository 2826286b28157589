"""One line in the log for every answer."""

import logging

from starlette.types import Scope

from .log_text import shown
from .paths import PROBES

_log = logging.getLogger("zelvoran_anpr.access")


def log_answer(scope: Scope, method: str, status: int, seconds: float) -> None:
    if scope["path"] in PROBES:  # asked for every few seconds: they would hide the rest
        return
    caller = scope["state"]["caller"]
    path = shown(scope.get("raw_path", b"").decode("ascii", "backslashreplace"))
    method = shown(method)
    fields = {
        "client": caller.address, "method": method, "path": path, "status": status,
        "milliseconds": round(seconds * 1000, 1), "caller": caller.name,
        "request_id": caller.request_id,
    }  # fmt: skip
    _log.info(
        '%s "%s %s" %d %.1f ms by=%s id=%s',
        caller.address, method, path, status, seconds * 1000, caller.name, caller.request_id,
        extra={"fields": fields},
    )  # fmt: skip
