"""What the engine logs while it reads a photo, so that it can stand in the photo's row."""

import logging
import threading
from collections.abc import Iterator
from contextlib import contextmanager

_LOG = logging.getLogger("zelvoran_anpr.reading")


class _Notes(logging.Handler):
    def __init__(self) -> None:
        super().__init__(logging.WARNING)
        self.texts: list[str] = []
        self._thread = threading.get_ident()

    def emit(self, record: logging.LogRecord) -> None:
        if record.thread == self._thread:
            self.texts.append(record.getMessage())


@contextmanager
def notes() -> Iterator[list[str]]:
    """Yield a list that takes the warnings of this thread's reading."""
    handler = _Notes()
    _LOG.addHandler(handler)
    try:
        yield handler.texts
    finally:
        _LOG.removeHandler(handler)
