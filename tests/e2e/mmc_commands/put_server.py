"""A running server, as far as the change of its backend can tell."""

import threading
from http.server import BaseHTTPRequestHandler, HTTPServer


class Server:
    """Answers every request with `answer`; keeps what it was sent."""

    def __init__(self, address: str = "127.0.0.1") -> None:
        server = self
        self.status, self.answer, self.seen = 200, b'{"success": true}', []
        self.token = None  # that a request must have

        class Handler(BaseHTTPRequestHandler):
            def do_PUT(self) -> None:
                length = int(self.headers["Content-Length"])
                headers = {name.lower(): value for name, value in self.headers.items()}
                server.seen.append((self.command, self.path, headers, self.rfile.read(length)))
                refused = server.token not in (None, headers.get("x-zv-anpr-token"))
                self.send_response(401 if refused else server.status)
                self.send_header("Content-Length", str(len(server.answer)))
                self.end_headers()
                self.wfile.write(server.answer)

            def log_message(self, *_: object) -> None:
                pass

        self.http = HTTPServer((address, 0), Handler)
        self.port = str(self.http.server_address[1])
        self.thread = threading.Thread(target=self.http.serve_forever, args=(0.02,), daemon=True)
        self.thread.start()

    def close(self) -> None:
        self.http.shutdown()
        self.http.server_close()
