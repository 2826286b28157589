"""Where a server listens: its port, and a Unix socket when one is configured."""

import socket

from ..config.options import ServerOptions
from .ports import listen
from .unix_socket import UnixListener


class Listeners:
    """Bound and not yet accepting."""

    def __init__(self, server: ServerOptions) -> None:
        """Raises PortProblem."""
        self._port = listen(server.host, server.port)
        try:
            self._unix = UnixListener(server.unix_socket) if server.unix_socket else None
        except BaseException:
            self._port.close()
            raise

    @property
    def sockets(self) -> list[socket.socket]:
        return [self._port, *([self._unix.socket] if self._unix else [])]

    def close(self) -> None:
        self._port.close()
        if self._unix:
            self._unix.close()
