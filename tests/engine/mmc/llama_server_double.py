"""Speaks llama-server's protocol without a model, for machines where no real one can be had.

Covers what the engine uses: --version; --model, --mmproj, --host, --port and the key in
LLAMA_API_KEY; /health with 503 while loading; /v1/chat/completions with a picture and a strict
JSON schema. Its answer is computed from the picture it was sent: color names the mean color,
model gives width x height. LLAMA_DOUBLE steers it: a JSON object with any of
fail (text: end at start), load (seconds), hang (file: once it exists, nothing is answered),
crash (file: once it exists, the next chat ends the process), slow (seconds per chat),
content (the message's text as it is), version_status.
"""

import base64
import io
import json
import os
import sys
import threading
import time
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

STEER = json.loads(os.environ.get("LLAMA_DOUBLE", "{}"))
COLORS = {"red": (255, 0, 0), "green": (0, 255, 0), "blue": (0, 0, 255), "white": (255, 255, 255)}
STARTED = time.monotonic()


def options(arguments: list[str]) -> dict[str, str]:
    """Flags and values; a flag before another flag has the value ""."""
    found: dict[str, str] = {}
    for at, word in enumerate(arguments):
        if word.startswith("--"):
            after = arguments[at + 1] if at + 1 < len(arguments) else ""
            found[word] = "" if after.startswith("--") else after
    return found


def described(jpeg: bytes) -> dict[str, str]:
    from PIL import Image

    picture = Image.open(io.BytesIO(jpeg))
    assert picture.format == "JPEG"
    mean = picture.convert("RGB").resize((1, 1)).getpixel((0, 0))
    nearest = min(
        COLORS, key=lambda n: sum((a - b) ** 2 for a, b in zip(COLORS[n], mean, strict=True))
    )
    return {"make": "Double", "model": f"{picture.width}x{picture.height}", "color": nearest}


def answer_to(body: dict) -> str:
    """The content of the message; KeyError and the like where the request is not as agreed."""
    picture, text = body["messages"][0]["content"]
    head, data = picture["image_url"]["url"].split(",", 1)
    schema = body["response_format"]["json_schema"]
    assert body["response_format"]["type"] == "json_schema" and schema["strict"] is True
    assert head == "data:image/jpeg;base64" and text["type"] == "text"
    fields = described(base64.b64decode(data, validate=True))
    assert set(fields) == set(schema["schema"]["required"])
    assert schema["schema"]["additionalProperties"] is False
    assert fields["color"] in schema["schema"]["properties"]["color"]["enum"]
    return STEER.get("content", json.dumps(fields))


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_: object) -> None:
        pass

    def do_GET(self) -> None:
        if os.path.exists(STEER.get("hang", "")):
            time.sleep(3600)
        if time.monotonic() - STARTED < STEER.get("load", 0):
            self._error(503, "Loading model", "unavailable_error")
        else:
            self._send(200, {"status": "ok"})

    def do_POST(self) -> None:
        body = self.rfile.read(int(self.headers["Content-Length"]))
        if self.headers.get("Authorization") != f"Bearer {os.environ['LLAMA_API_KEY']}":
            self._error(401, "Invalid API Key", "authentication_error")
            return
        if os.path.exists(STEER.get("crash", "")):
            os._exit(11)
        time.sleep(STEER.get("slow", 0))
        try:
            content = answer_to(json.loads(body))
        except Exception as error:  # noqa: BLE001  whatever it was, the client is told
            self._error(400, repr(error), "invalid_request_error")
            return
        message = {"role": "assistant", "content": content}
        choice = {"index": 0, "finish_reason": "stop", "message": message}
        self._send(200, {"object": "chat.completion", "choices": [choice]})

    def _error(self, status: int, text: str, kind: str) -> None:
        self._send(status, {"error": {"code": status, "message": text, "type": kind}})

    def _send(self, status: int, value: dict) -> None:
        body = json.dumps(value).encode()
        self.send_response(status)
        self.send_header("Content-Type", "application/json; charset=utf-8")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)


def main() -> int:
    if "--version" in sys.argv:
        print("version: 10068 (double)", file=sys.stderr)
        return STEER.get("version_status", 0)
    if "fail" in STEER:
        print(STEER["fail"], file=sys.stderr)
        return 1
    given = options(sys.argv[1:])
    for name in ("--model", "--mmproj"):
        if not os.path.isfile(given[name]):
            print(f"error: failed to load {name[2:]} '{given[name]}'", file=sys.stderr)
            return 1
    server = ThreadingHTTPServer((given["--host"], int(given["--port"])), Handler)
    server.daemon_threads = True
    threading.Thread(target=server.serve_forever, daemon=True).start()
    print(f"server is listening on http://{given['--host']}:{given['--port']}", flush=True)
    threading.Event().wait()
    return 0


if __name__ == "__main__":
    sys.exit(main())
