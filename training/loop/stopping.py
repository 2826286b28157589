"""When a run ends: its minutes are over, or someone asks it to stop."""

import signal
import time


class Stop:
    """True in `now()` once the minutes are over or an interrupt came; a second one kills."""

    def __init__(self, minutes: float):
        self._end = time.monotonic() + 60 * minutes
        self._asked = False
        for number in (signal.SIGINT, signal.SIGTERM):
            signal.signal(number, self._ask)

    def _ask(self, number: int, _frame: object) -> None:
        if self._asked:
            signal.signal(number, signal.SIG_DFL)
            signal.raise_signal(number)
        self._asked = True

    def now(self) -> bool:
        return self._asked or time.monotonic() >= self._end
