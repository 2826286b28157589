"""Good, bad and slow clients at the same time against one server, for minutes.

    python bench/server_soak.py [PHOTO] [--seconds 600] [--threads 2] [--good 2] [--bad 4]
                                [--slow 40] [--detector-model 320p_fp32]

Starts a server of its own on a free port of the loopback. Good clients upload a photo again and
again, and look at the probes; bad ones send what is no HTTP, no photo, too large or made to hurt;
slow ones hold idle connections, drip a head or leave an upload unfinished. Prints what the good
ones got, and memory (the server and its readers) and open files in tenths of the time. The exit
status is 1 when a good request failed (429 is waited out as the answer says), a probe was not
answered with 200, or memory or files grew by more than a fifth from the second tenth to the last.
"""

import argparse
import contextlib
import http.client
import io
import json
import os
import random
import shutil
import socket
import statistics
import sys
import tempfile
import threading
import time
from collections import Counter
from collections.abc import Callable, Iterator
from pathlib import Path
from typing import NamedTuple

MOST_GROWTH = 0.2
BOUNDARY = b"soak"
PARTS = 10


class Sample(NamedTuple):
    at: float
    memory_mb: float
    files: int


class Soak:
    """The clients of one run, and what became of their requests."""

    def __init__(self, port: int, seconds: float, photo: bytes) -> None:
        self.port = port
        self.good: Counter[str] = Counter()
        self.bad: Counter[str] = Counter()
        self.end = time.monotonic() + seconds
        self.photo = photo
        self._scans = progressive(20_000)

    def running(self) -> bool:
        return time.monotonic() < self.end

    def ask(self, method: str, path: str, body: bytes = b"", **headers: str) -> tuple[int, int]:
        """Return the status and the seconds of Retry-After."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        with contextlib.closing(connection):
            kind = {"Content-Type": f"multipart/form-data; boundary={BOUNDARY.decode()}"}
            connection.request(method, path, body or None, {**(kind if body else {}), **headers})
            answer = connection.getresponse()
            answer.read()
            return answer.status, int(answer.headers.get("Retry-After", 0))

    def be_good(self) -> None:
        while self.running():
            try:
                status, wait = self.ask("POST", "/api/anpr", form(self.photo))
                self.good[f"photo {status}"] += 1
                time.sleep(wait)
                self.good[f"probe {self.ask('GET', '/livez')[0]}"] += 1
                self.good[f"probe {self.ask('GET', '/readyz')[0]}"] += 1
            except (OSError, http.client.HTTPException) as error:
                self.good[f"failed {type(error).__name__}"] += 1

    def be_bad(self) -> None:
        chance = random.Random()
        deeds: list[Callable[[], tuple[int, int]]] = [
            lambda: self.ask("POST", "/api/anpr", form(os.urandom(100_000))),
            lambda: self.ask("POST", "/api/anpr", form(self.photo[: len(self.photo) // 3])),
            lambda: self.ask("POST", "/api/anpr", form(self._scans)),
            lambda: self.ask("POST", "/api/anpr", form(b"\xff\xd8" + b"\xff" * 1_000_000)),
            lambda: self.ask("POST", "/api/anpr", b"y" * 100_000),
            lambda: self.ask("GET", "/api/region", Host="evil.example"),
            lambda: self.ask("GET", "/api/region", Cookie="zv_anpr_session=" + "\\" * 20_000),
            lambda: self.ask("GET", "/" + "a" * 3000),
            lambda: self.ask("PUT", "/api/region", b'{"region": "\\ud800"}'),
            lambda: self._shout(os.urandom(2000)),
            lambda: self._shout(b"GET / HTTP/1.1\r\n" + b"X: y\r\n" * 9000),
        ]
        while self.running():
            try:
                self.bad[str(chance.choice(deeds)()[0])] += 1
            except (OSError, http.client.HTTPException):
                self.bad["cut off"] += 1
            time.sleep(0.05)

    def be_slow(self) -> None:
        chance = random.Random()
        while self.running():
            with contextlib.suppress(OSError), self._connected() as connection:
                connection.sendall(chance.choice(SLOW_BEGINNINGS))
                for _ in range(20):
                    if not self.running():
                        return
                    time.sleep(0.5)
                    connection.sendall(chance.choice([b"", b"x"]))

    def _shout(self, data: bytes) -> tuple[int, int]:
        with self._connected() as connection:
            connection.sendall(data)
            first = connection.recv(100).split()
            return (int(first[1]) if len(first) > 1 else 0), 0

    @contextlib.contextmanager
    def _connected(self) -> Iterator[socket.socket]:
        with socket.create_connection(("127.0.0.1", self.port), timeout=30) as connection:
            yield connection


SLOW_BEGINNINGS = (
    b"",
    b"GET /api/health HTTP/1.1\r\nHost: localhost\r\nX-A: ",
    b"POST /api/anpr HTTP/1.1\r\nHost: localhost\r\nContent-Length: 9000000\r\n"
    b"Content-Type: multipart/form-data; boundary=soak\r\n\r\n--soak\r\n"
    b'Content-Disposition: form-data; name="image"; filename="a"\r\n\r\n' + b"y" * 300_000,
)


def form(photo: bytes) -> bytes:
    head = b'Content-Disposition: form-data; name="image"; filename="a.jpg"\r\n\r\n'
    return b"--" + BOUNDARY + b"\r\n" + head + photo + b"\r\n--" + BOUNDARY + b"--\r\n"


def progressive(scans: int) -> bytes:
    data = drawn(1200, 900, progressive=True)
    last = data.rindex(b"\xff\xda")
    return data[:-2] + data[last:-2] * scans + data[-2:]


def drawn(width: int, height: int, **options: bool) -> bytes:
    from PIL import Image

    stream = io.BytesIO()
    Image.linear_gradient("L").resize((width, height)).convert("RGB").save(
        stream, "JPEG", **options
    )
    return stream.getvalue()


@contextlib.contextmanager
def server(threads: int, model: str) -> Iterator[dict]:
    """A background server with a directory of its own, as its description."""
    directory = tempfile.mkdtemp(prefix="zv-soak-")
    config = {"server": {"detector_model": model}, "limits": {"header_seconds": 5}}
    Path(directory, "server_config.yaml").write_text(json.dumps(config))
    os.environ["ZELVORAN_CONFIG_DIR"] = directory
    from zelvoran_anpr import zelvoran_anpr_server_daemon as daemon

    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        port = probe.getsockname()[1]
    daemon.start_server(port=port, daemon=True, threads=threads)
    try:
        yield daemon.get_status()
    finally:
        daemon.stop_server()
        shutil.rmtree(directory)


def sample(pid: int) -> Sample:
    import psutil

    process = psutil.Process(pid)
    memory = 0
    for one in [process, *process.children(recursive=True)]:
        with contextlib.suppress(psutil.Error):
            memory += one.memory_info().rss
    return Sample(time.monotonic(), memory / 2**20, process.num_fds())


def soak(given: argparse.Namespace, pid: int, port: int) -> tuple[Soak, list[Sample]]:
    photo = given.photo.read_bytes() if given.photo else drawn(1280, 960)
    made = Soak(port, given.seconds, photo)
    jobs = [made.be_good] * given.good + [made.be_bad] * given.bad + [made.be_slow] * given.slow
    clients = [threading.Thread(target=job) for job in jobs]
    for client in clients:
        client.start()
    samples = []
    while made.running():
        samples.append(sample(pid))
        time.sleep(1)
    for client in clients:
        client.join()
    return made, samples


def tell(made: Soak, samples: list[Sample]) -> bool:
    """Print what was found; return whether it is good."""
    length = max(len(samples) // PARTS, 1)
    parts = [samples[at : at + length] for at in range(0, len(samples), length)][:PARTS]
    memory = [statistics.median(one.memory_mb for one in part) for part in parts]
    files = [statistics.median(one.files for one in part) for part in parts]
    print("good    ", dict(sorted(made.good.items())))
    print("bad     ", dict(sorted(made.bad.items())))
    print("MiB     ", " ".join(f"{value:.0f}" for value in memory))
    print("files   ", " ".join(f"{value:.0f}" for value in files))
    failed = [name for name in made.good if name not in ("photo 200", "photo 429", "probe 200")]
    if failed:
        print("failed  ", ", ".join(failed))
    flat = all(part[-1] <= part[min(1, len(part) - 1)] * (1 + MOST_GROWTH) + 2
               for part in (memory, files))  # fmt: skip
    return not failed and flat and made.good["photo 200"] > 0


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("photo", type=Path, nargs="?")
    parser.add_argument("--seconds", type=float, default=600)
    parser.add_argument("--threads", type=int, default=2)
    parser.add_argument("--good", type=int, default=2)
    parser.add_argument("--bad", type=int, default=4)
    parser.add_argument("--slow", type=int, default=40)
    parser.add_argument("--detector-model", default="320p_fp32")
    given = parser.parse_args()
    with server(given.threads, given.detector_model) as found:
        made, samples = soak(given, found["pid"], found["port"])
    return 0 if tell(made, samples) else 1


if __name__ == "__main__":
    sys.exit(main())
