"""Limits by client address: failed sign-ins, requests per minute, photos at the same time."""

import math
import time
from collections import OrderedDict

from ..config.addresses import ip_address

_CLIENTS = 10_000
"""So many are remembered; the one that was quiet for longest is forgotten first."""
_FAILURES = 10
_NETWORK_BITS = 64
"""Whoever has one IPv6 address has as many as these leave."""


class Allowance:
    """Lets each client do `count` things at once, and as many again over `seconds`."""

    def __init__(self, count: int, seconds: float) -> None:
        self._count = count
        self._per_second = count / seconds
        self._left: OrderedDict[str, tuple[float, float]] = OrderedDict()

    def wait(self, client: str) -> int:
        """Return in how many whole seconds the client may do the next thing; 0 is now."""
        missing = 1 - self._now(client)
        return max(0, math.ceil(missing / self._per_second))

    def take(self, client: str) -> None:
        key = _key(client)
        self._left[key] = (max(0.0, self._now(client) - 1), time.monotonic())
        self._left.move_to_end(key)
        if len(self._left) > _CLIENTS:
            self._left.popitem(last=False)

    def _now(self, client: str) -> float:
        left, when = self._left.get(_key(client), (float(self._count), 0.0))
        return min(self._count, left + (time.monotonic() - when) * self._per_second)


def failed_sign_ins() -> Allowance:
    return Allowance(_FAILURES, 60)


class Underway:
    """Counts what each client has under way."""

    def __init__(self, most: int) -> None:
        """`most` is 0 for no limit."""
        self._most = most
        self._counts: dict[str, int] = {}

    def begin(self, client: str) -> bool:
        """Count one more, or return False when there are as many as may be."""
        key = _key(client)
        count = self._counts.get(key, 0)
        if self._most and count >= self._most:
            return False
        self._counts[key] = count + 1
        return True

    def end(self, client: str) -> None:
        key = _key(client)
        self._counts[key] -= 1
        if not self._counts[key]:
            del self._counts[key]


def _key(client: str) -> str:
    address = ip_address(client)
    if address is None or address.version == 4:
        return client
    return str(int(address) >> _NETWORK_BITS)
