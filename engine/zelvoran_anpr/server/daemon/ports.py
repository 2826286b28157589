"""Takes a port to listen on, or says who has it."""

import socket
import sys

from .records import running_instances


class PortProblem(RuntimeError):
    """The address cannot be listened on; the text is one line that says what to do."""


def listen(host: str, port: int) -> socket.socket:
    """Return a socket that is bound to the address and not yet accepting. Raises PortProblem."""
    try:
        found = socket.getaddrinfo(host, port, type=socket.SOCK_STREAM, flags=socket.AI_PASSIVE)
    except OSError as error:
        raise PortProblem(f"Cannot listen on {host}: {error.strerror}") from None
    # "localhost" may mean both families; clients that name no host ask for 127.0.0.1.
    family, _, _, _, address = min(found, key=lambda entry: entry[0] != socket.AF_INET)
    # The event loop turns Nagle's delay off only for sockets that name their protocol.
    server = socket.socket(family, socket.SOCK_STREAM, socket.IPPROTO_TCP)
    if sys.platform != "win32":  # there the option would let two servers share the port
        server.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    try:
        server.bind(address)
        server.listen(1)  # the option above lets a second bind pass as long as nobody listens
    except OSError as error:
        server.close()
        raise PortProblem(_explain(host, port, error)) from None
    return server


def check_free(host: str, port: int) -> None:
    """Raise PortProblem when nobody could listen on the address now."""
    listen(host, port).close()


def check_address(host: str) -> None:
    """Raise PortProblem when this is no address of this machine, whatever port it is for."""
    listen(host, 0).close()


def _explain(host: str, port: int, error: OSError) -> str:
    import errno

    if error.errno == errno.EACCES:
        return f"Port {port} needs more rights than you have; choose one above 1023 with --port"
    if error.errno != errno.EADDRINUSE:
        return f"Cannot listen on {f'{host}:{port}' if port else host}: {error.strerror}"
    for instance in running_instances():
        if instance.port == port:
            stop = f"stop it with: zv-anpr server stop --port {port}"
            return f"Port {port} is in use by an ANPR server (PID {instance.pid}); {stop}"
    holder = _holder(port)
    return f"Port {port} is in use by {holder or 'another program'}; choose another with --port"


def _holder(port: int) -> str | None:
    import psutil

    try:
        for connection in psutil.net_connections(kind="tcp"):
            if connection.status == psutil.CONN_LISTEN and connection.laddr.port == port:
                name = psutil.Process(connection.pid).name() if connection.pid else None
                return name and f"{name} (PID {connection.pid})"
    except psutil.Error:
        pass  # the name is a courtesy; without the right to see it the message stays plain
    return None
