"""Finds out whether a client that sends no more still waits for its answer."""

import asyncio
import select
from collections.abc import Callable

_FIRST_SECONDS = 1.0
_POLL_SECONDS = 0.25


class Listener:
    """Watches a connection whose other end has finished sending.

    It may have closed only that direction, or all: the two look the same until something is sent.
    `ask` sends a word that every client passes over; who has closed all, answers it with a reset.
    """

    def __init__(self, transport: asyncio.Transport, ask: Callable[[], bool]) -> None:
        self._transport = transport
        self._ask = ask
        self._asked = False
        self._timer = asyncio.get_running_loop().call_later(_FIRST_SECONDS, self._look)

    def stop(self) -> None:
        self._timer.cancel()

    def _look(self) -> None:
        if self._transport.is_closing():
            return
        if not self._asked:
            self._asked = self._ask()
        elif self._is_gone():
            self._transport.abort()
            return
        self._timer = asyncio.get_running_loop().call_later(_POLL_SECONDS, self._look)

    def _is_gone(self) -> bool:
        socket = self._transport.get_extra_info("socket")
        if socket is None or not hasattr(select, "poll"):
            return False
        poll = select.poll()
        poll.register(socket.fileno(), 0)
        return any(events & (select.POLLERR | select.POLLHUP) for _, events in poll.poll(0))
