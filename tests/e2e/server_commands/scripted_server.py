"""A server on raw sockets that answers as a test says, and keeps what it was sent."""

import contextlib
import json
import socket
import threading
from collections.abc import Callable
from dataclasses import dataclass, field

CUT = object()  # hang up without an answer
SILENCE = object()  # never answer


@dataclass
class Request:
    """One request as it came over the wire."""

    head: bytes
    body: bytes

    @property
    def line(self) -> str:
        return self.head.split(b"\r\n")[0].decode()

    @property
    def headers(self) -> dict[str, str]:
        pairs = (line.split(b": ", 1) for line in self.head.split(b"\r\n")[1:] if line)
        return {name.decode().lower(): value.decode() for name, value in pairs}


def http(body: bytes | str, status: str = "200 OK", *headers: str) -> bytes:
    """An answer that tells its length."""
    data = body.encode() if isinstance(body, str) else body
    lines = [f"HTTP/1.1 {status}", f"Content-Length: {len(data)}", *headers]
    return "\r\n".join(lines).encode() + b"\r\n\r\n" + data


def answer(value: object) -> bytes:
    return http(json.dumps(value))


@dataclass
class ScriptedServer:
    """Answers by path; a list is answered one by one."""

    answers: dict[str, object] = field(default_factory=dict)
    requests: list[Request] = field(default_factory=list)
    before_answer: Callable[[], None] = lambda: None

    def __enter__(self) -> "ScriptedServer":
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.port = self._listener.getsockname()[1]
        self._stop = threading.Event()
        self._thread = threading.Thread(target=self._serve, daemon=True)
        self._thread.start()
        return self

    def __exit__(self, *_: object) -> None:
        self._stop.set()
        self._listener.close()
        with socket.socket() as wake:
            wake.connect_ex(("127.0.0.1", self.port))
        self._thread.join(10)

    @property
    def base(self) -> str:
        return f"http://127.0.0.1:{self.port}"

    @property
    def lines(self) -> list[str]:
        return [request.line for request in self.requests]

    def _serve(self) -> None:
        while not self._stop.is_set():
            try:
                connection, _ = self._listener.accept()
            except OSError:
                return
            with connection, contextlib.suppress(OSError):
                self._answer(connection)

    def _answer(self, connection: socket.socket) -> None:
        request = read_request(connection)
        if request is None:
            return
        self.requests.append(request)
        self.before_answer()
        chosen = self.answers.get(request.line.split()[1], http("{}", "404 Not Found"))
        if isinstance(chosen, list):
            chosen = chosen.pop(0)
        if chosen is SILENCE:
            self._stop.wait(30)
        elif chosen is not CUT:
            connection.sendall(chosen)


def read_request(connection: socket.socket) -> Request | None:
    data = b""
    while b"\r\n\r\n" not in data:
        chunk = connection.recv(65536)
        if not chunk:
            return None
        data += chunk
    head, begun = data.split(b"\r\n\r\n", 1)
    body = bytearray(begun)
    length = int(Request(head, b"").headers.get("content-length", "0"))
    while len(body) < length:
        chunk = connection.recv(65536)
        if not chunk:
            break
        body += chunk
    return Request(head, bytes(body))
