"""What `zv-anpr server detect` adds per image to the same upload by curl.

Both talk to a server that answers at once, so that recognition does not hide the difference. The
cost per image is (time of many - time of one) / (many - 1); rounds alternate, medians count.

    python bench/server_detect.py [--images 40] [--kilobytes 300] [--rounds 9]

The interpreter must have the packages of the `server` extra; ZV_ANPR_EXE names the executable.
"""

import argparse
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import threading
import time
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
EXECUTABLE = os.environ.get("ZV_ANPR_EXE", str(ROOT / "build" / "release" / "zv-anpr"))
ANSWER = b'{"results": [{"plate_text": "AB123", "confidence": 97.5}], "processing_sec": 0.1}'


class Handler(BaseHTTPRequestHandler):
    """Takes an upload and answers at once."""

    protocol_version = "HTTP/1.1"
    disable_nagle_algorithm = True

    def do_POST(self) -> None:
        self.rfile.read(int(self.headers["Content-Length"]))
        head = b"HTTP/1.1 200 OK\r\nConnection: close\r\n"
        head += b"Content-Length: %d\r\n\r\n" % len(ANSWER)
        self.wfile.write(head + ANSWER)

    def log_message(self, *_: object) -> None:
        pass


def detect(port: int, images: list[Path]) -> list[str]:
    return [EXECUTABLE, "server", "detect", "--port", str(port), *map(str, images)]


def curl(port: int, images: list[Path]) -> list[str]:
    words = ["curl"]
    for image in images:
        url = f"http://127.0.0.1:{port}/api/anpr"
        one = ["-sS", "-H", "Connection: close", "-H", "Expect:", "-F", f"image=@{image}", url]
        words += [*(["--next"] if len(words) > 1 else []), *one]
    return words


def seconds(command: list[str], plates: int) -> float:
    start = time.perf_counter()
    done = subprocess.run(command, check=True, capture_output=True, text=True)
    taken = time.perf_counter() - start
    assert done.stdout.count("AB123") == plates, done.stdout + done.stderr
    return taken


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--images", type=int, default=40)
    parser.add_argument("--kilobytes", type=int, default=300)
    parser.add_argument("--rounds", type=int, default=9)
    options = parser.parse_args()
    if not shutil.which("curl"):
        sys.exit("curl is the baseline and is not installed")
    server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    with tempfile.TemporaryDirectory() as folder:
        os.environ.update(
            HOME=folder,
            ZELVORAN_CONFIG_DIR=folder,
            ZV_ANPR_PYTHON=sys.executable,
            PYTHONPATH=str(ROOT / "engine"),
        )
        (Path(folder) / "api_token").write_text("a-token-for-the-bench\n")
        images = [Path(folder) / f"{number}.jpg" for number in range(options.images)]
        for image in images:
            image.write_bytes(os.urandom(options.kilobytes * 1000))
        results = {curl: [], detect: []}
        for _ in range(options.rounds):
            for tool, costs in results.items():
                one = seconds(tool(server.server_port, images[:1]), 1)
                many = seconds(tool(server.server_port, images), len(images))
                costs.append((many - one) / (len(images) - 1) * 1000)
    medians = {tool.__name__: statistics.median(costs) for tool, costs in results.items()}
    print(f"{options.images} uploads of {options.kilobytes} kB, {options.rounds} rounds, median")
    for name, median in medians.items():
        print(f"  {name:<7}{median:6.2f} ms per image")
    print(f"  added  {medians['detect'] - medians['curl']:6.2f} ms per image")


if __name__ == "__main__":
    main()
