"""Listens on a Unix socket as well, where the system has them."""

import contextlib
import os
import socket
import stat
from pathlib import Path

from .ports import PortProblem

_MODE = 0o660
"""For the user and the group, such as the proxy's; its token is asked for all the same."""


class UnixListener:
    """Listens on a socket of the file system until it is closed."""

    def __init__(self, path: str) -> None:
        """Raises PortProblem."""
        self._file = Path(path).expanduser().absolute()
        self.socket = _listen(self._file)
        self._made = self._file.stat()

    def close(self) -> None:
        """Remove the file, unless it is another server's by now."""
        self.socket.close()
        with contextlib.suppress(OSError):
            if os.path.samestat(self._file.stat(), self._made):
                self._file.unlink()


def _listen(file: Path) -> socket.socket:
    if not hasattr(socket, "AF_UNIX"):
        raise PortProblem("server.unix_socket: this system has no Unix sockets")
    try:
        _remove_dead(file)
        listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        listener.bind(str(file))
        os.chmod(file, _MODE)
        listener.listen(1)
    except OSError as error:
        raise PortProblem(f"Cannot listen on {file}: {error.strerror or error}") from None
    return listener


def _remove_dead(file: Path) -> None:
    """Remove the socket of a server that was killed; anything else stays."""
    try:
        is_socket = stat.S_ISSOCK(file.lstat().st_mode)
    except FileNotFoundError:
        return
    if not is_socket:
        raise PortProblem(f"Cannot listen on {file}: there is another file")
    with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as probe:
        if probe.connect_ex(str(file)) == 0:
            raise PortProblem(f"Cannot listen on {file}: another server does")
    file.unlink()
