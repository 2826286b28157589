"""A real S3 server on loopback, with a front that fails on demand."""

import threading
from collections.abc import Callable, Iterator
from contextlib import contextmanager

from moto.server import DomainDispatcherApplication, create_backend_app
from pyarrow.fs import S3FileSystem
from werkzeug.serving import WSGIRequestHandler, make_server

KEY = "test"
Rule = Callable[[str, str], str | None]  # of method and path: "500", "cut", "denied" or nothing

_DENIED = b"<Error><Code>AccessDenied</Code><Message>Access Denied</Message></Error>"


class MoodyS3:
    """`rule` decides what becomes of a request; the default passes all on."""

    def __init__(self) -> None:
        self.rule: Rule = lambda _method, _path: None
        self._s3 = DomainDispatcherApplication(create_backend_app)

    def __call__(self, environ: dict, start_response: Callable):
        mood = self.rule(environ["REQUEST_METHOD"], environ["PATH_INFO"])
        if mood == "500":
            start_response("500 Internal Server Error", [("Content-Length", "0")])
            return [b""]
        if mood == "denied":
            start_response("403 Forbidden", [("Content-Type", "application/xml")])
            return [_DENIED]
        if mood == "cut":
            start_response("200 OK", [("Content-Length", "100000")])
            return _cut_body()
        return self._s3(environ, start_response)


def _cut_body() -> Iterator[bytes]:
    yield b"x" * 10
    raise ConnectionAbortedError


class _Quiet(WSGIRequestHandler):
    protocol_version = "HTTP/1.1"

    def log(self, type: str, message: str, *args: object) -> None:
        pass


class Storage:
    def __init__(self, server: MoodyS3, port: int) -> None:
        self.server = server
        self.options = f"?endpoint_override=127.0.0.1:{port}&scheme=http&region=us-east-1"
        self.fs = S3FileSystem(
            access_key=KEY,
            secret_key=KEY,
            endpoint_override=f"127.0.0.1:{port}",
            scheme="http",
            region="us-east-1",
            request_timeout=60,  # the first answer waits for the server's modules
            allow_bucket_creation=True,
            allow_bucket_deletion=True,
        )

    def address(self, path: str, user: str = f"{KEY}:{KEY}") -> str:
        return f"s3://{user}@{path}{self.options}"


@contextmanager
def storage() -> Iterator[Storage]:
    s3 = MoodyS3()
    server = make_server("127.0.0.1", 0, s3, threaded=True, request_handler=_Quiet)
    thread = threading.Thread(target=server.serve_forever)
    thread.start()
    try:
        yield Storage(s3, server.server_port)
    finally:
        server.shutdown()
        thread.join()
        server.server_close()
