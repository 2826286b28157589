"""How many clients are connected, and who of the others still gets a word in."""

from collections import deque
from typing import Protocol

LOBBY = 32
"""Connections beyond the limit that are kept for a moment: a supervisor may be among them."""


class Connection(Protocol):
    def give_way(self) -> None: ...


class Crowd:
    """Counts the connections of one server; those over `limit` wait in a lobby.

    In the lobby only probes are answered. When it is full, the one that came first is let go: a
    client that sends its request at once gets through, however many others only hold the line.
    """

    def __init__(self, limit: int) -> None:
        self._limit = limit
        self._seated: set[Connection] = set()
        self._lobby: deque[Connection] = deque()

    def enter(self, connection: Connection) -> None:
        if len(self._seated) < self._limit:
            self._seated.add(connection)
            return
        if len(self._lobby) >= LOBBY:
            self._lobby.popleft().give_way()
        self._lobby.append(connection)

    def leave(self, connection: Connection) -> None:
        self._seated.discard(connection)
        if connection in self._lobby:
            self._lobby.remove(connection)

    def is_seated(self, connection: Connection) -> bool:
        """Tell whether its requests are answered; one in the lobby takes a seat that is free."""
        if connection not in self._seated and len(self._seated) < self._limit:
            self.leave(connection)
            self._seated.add(connection)
        return connection in self._seated
