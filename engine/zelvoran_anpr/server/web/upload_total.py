"""Bounds what all uploads of a server together hold in memory."""

from typing import Protocol


class Body(Protocol):
    taken: int
    """Bytes so far."""
    last_at: float
    """When the latest of them came, on the monotonic clock."""
    complete: bool

    def give_way(self) -> None: ...


class UploadTotal:
    """Makes room at the cost of the unfinished upload whose client has been silent the longest."""

    def __init__(self, most_bytes: int) -> None:
        self._most = most_bytes
        self._held = 0
        self._bodies: set[Body] = set()

    @property
    def held(self) -> int:
        return self._held

    def enter(self, body: Body) -> None:
        self._bodies.add(body)

    def take(self, body: Body, more: int) -> bool:
        """Count further bytes of a body; return False when there is no room for them."""
        while self._held + more > self._most:
            unfinished = [one for one in self._bodies if not one.complete and one is not body]
            if not unfinished:
                return False
            silent = min(unfinished, key=lambda one: one.last_at)
            self.leave(silent)
            silent.give_way()
        body.taken += more
        self._held += more
        return True

    def leave(self, body: Body) -> None:
        if body in self._bodies:
            self._bodies.remove(body)
            self._held -= body.taken
