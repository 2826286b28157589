"""A local server that speaks as the model hub and as the release page, and can fail at any byte.

Hub: HEAD and GET of /<repo>/resolve/<revision>/<file> redirect, with the commit, size and ETag of
the linked object, to a storage address on another host name, which serves ranges. Release page:
the JSON of releases, and asset addresses that redirect to storage in the same way.
"""

import hashlib
import json
import threading
from dataclasses import dataclass, field
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from urllib.parse import parse_qs, urlsplit

REPO = "Qwen/Qwen3-VL-2B-Instruct-GGUF"
COMMIT = "0123456789abcdef0123456789abcdef01234567"
RELEASES = "/repos/ggml-org/llama.cpp/releases"
_BLOCK = 16 << 10


@dataclass
class Fault:
    """What goes wrong for the next `times` answers whose path contains `path`.

    cut: close at byte `at` of the object; corrupt: flip that byte; stall: say nothing more from
    there until the server closes; status: answer `at`; limit: no more anonymous requests;
    drop: close without an answer; whole: ignore the range; longer: claim one byte more;
    shift: answer with another range.
    """

    kind: str
    path: str
    at: int = 0
    times: int = 1


@dataclass(frozen=True)
class Seen:
    """One request; `start` is where its range begins, in bytes, 0 for none."""

    method: str
    path: str
    start: int
    authorization: str | None


@dataclass
class Hub:
    """`objects`: storage by SHA-256; `models`: hub files; `releases`: newest first."""

    objects: dict[str, bytes] = field(default_factory=dict)
    models: dict[str, str] = field(default_factory=dict)
    releases: list[dict] = field(default_factory=list)
    faults: list[Fault] = field(default_factory=list)
    seen: list[Seen] = field(default_factory=list)
    sent: int = 0
    digests: bool = True

    def __enter__(self) -> "Hub":
        hub = self
        self.closing = threading.Event()

        class Handler(_Handler):
            hub = None

        Handler.hub = hub
        self._server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._server.daemon_threads = True
        threading.Thread(target=self._server.serve_forever, args=(0.02,), daemon=True).start()
        return self

    def __exit__(self, *_: object) -> None:
        self.closing.set()
        self._server.shutdown()
        self._server.server_close()

    @property
    def port(self) -> int:
        return self._server.server_address[1]

    @property
    def url(self) -> str:
        return f"http://127.0.0.1:{self.port}"

    def add_model(self, repo: str, file: str, content: bytes) -> dict:
        """Put a file on the hub; its entry for a model manifest."""
        digest = self._store(content)
        self.models[f"/{repo}/resolve/main/{file}"] = digest
        return {"file": file, "size": len(content), "sha256": digest}

    def add_release(self, tag: str, assets: dict[str, bytes]) -> None:
        entries = []
        for name, content in assets.items():
            digest = self._store(content)
            path = f"/ggml-org/llama.cpp/releases/download/{tag}/{name}"
            entries.append(
                {
                    "name": name,
                    "state": "uploaded",
                    "size": len(content),
                    "digest": f"sha256:{digest}" if self.digests else None,
                    "browser_download_url": f"{self.url}{path}",
                }
            )
            self.models[path] = digest
        self.releases.insert(
            0, {"tag_name": tag, "draft": False, "prerelease": False, "assets": entries}
        )

    def downloads(self, path: str = "/storage/") -> list[Seen]:
        return [s for s in self.seen if s.method == "GET" and path in s.path]

    def _store(self, content: bytes) -> str:
        digest = hashlib.sha256(content).hexdigest()
        self.objects[digest] = content
        return digest

    def fault(self, path: str) -> Fault | None:
        for fault in self.faults:
            if fault.times > 0 and fault.path in path:
                fault.times -= 1
                return fault
        return None


class _Handler(BaseHTTPRequestHandler):
    hub: Hub
    protocol_version = "HTTP/1.1"

    def do_HEAD(self) -> None:
        self._answer()

    def do_GET(self) -> None:
        self._answer()

    def log_message(self, *_: object) -> None:
        pass

    def _answer(self) -> None:
        parts = urlsplit(self.path)
        wanted = self.headers.get("Range", "bytes=0-").removeprefix("bytes=").rstrip("-")
        start = int(wanted or 0)
        key = self.headers.get("Authorization")
        self.hub.seen.append(Seen(self.command, parts.path, start, key))
        fault = self.hub.fault(parts.path)
        if fault and fault.kind == "drop":
            self.close_connection = True
        elif fault and fault.kind == "limit":
            self._send(403, {"X-RateLimit-Remaining": "0"}, b"{}")
        elif fault and fault.kind == "status":
            self._send(fault.at, {}, b"{}")
        elif parts.path.startswith(RELEASES):
            self._release(parts.path.removeprefix(RELEASES), parse_qs(parts.query))
        elif parts.path.startswith("/storage/"):
            self._object(self.hub.objects[parts.path.split("/")[2]], start, fault)
        else:
            self._link(parts.path)

    def _release(self, rest: str, query: dict[str, list[str]]) -> None:
        pages = self.hub.releases
        found: object = None
        if rest == "/latest" and pages:
            found = pages[0]
        elif rest == "" and query:
            found = pages[: int(query["per_page"][0])]
        else:
            found = next((r for r in pages if rest == f"/tags/{r['tag_name']}"), None)
        body = json.dumps(found if found is not None else {"message": "Not Found"}).encode()
        self._send(200 if found is not None else 404, {"Content-Type": "application/json"}, body)

    def _link(self, path: str) -> None:
        digest = self.hub.models.get(path)
        if digest is None:
            self._send(404, {"X-Error-Code": "EntryNotFound"}, b"Entry not found")
            return
        headers = {
            "Location": f"http://localhost:{self.hub.port}/storage/{digest}?signature=x",
            "X-Repo-Commit": COMMIT,
            "X-Linked-Size": str(len(self.hub.objects[digest])),
            "X-Linked-ETag": f'"{digest}"',
            "ETag": f'"{digest}"',
        }
        self._send(302, headers, b"")

    def _object(self, content: bytes, start: int, fault: Fault | None) -> None:
        kind, at = (fault.kind, fault.at) if fault else ("", -1)
        if kind == "whole":
            start = 0
        if start >= len(content) > 0:
            self._send(416, {"Content-Range": f"bytes */{len(content)}"}, b"")
            return
        shown = start + 1 if kind == "shift" else start
        total = len(content) + (kind == "longer")
        self.send_response(206 if start else 200)
        if start:
            self.send_header("Content-Range", f"bytes {shown}-{total - 1}/{total}")
        self.send_header("Accept-Ranges", "bytes")
        self.send_header("Content-Length", str(total - start))
        self.end_headers()
        if kind == "corrupt":
            content = content[:at] + bytes([content[at] ^ 1]) + content[at + 1 :]
        end = at if kind in ("cut", "stall") else len(content)
        self._body(memoryview(content)[start:end])
        if kind == "stall":
            self.hub.closing.wait()
        if kind in ("cut", "stall", "longer"):
            self.close_connection = True

    def _body(self, view: memoryview) -> None:
        for offset in range(0, len(view), _BLOCK):
            block = view[offset : offset + _BLOCK]
            try:
                self.wfile.write(block)
            except OSError:
                self.close_connection = True
                return
            self.hub.sent += len(block)

    def _send(self, status: int, headers: dict[str, str], body: bytes) -> None:
        self.send_response(status)
        for name, value in headers.items():
            self.send_header(name, value)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        if self.command != "HEAD":
            self.wfile.write(body)
