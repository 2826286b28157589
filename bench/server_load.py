"""Load on a server over loopback, against the bare engine with the same number of threads.

    python bench/server_load.py PHOTO [--seconds 60] [--clients 16] [--threads 2]
                               [--detector-model 640p_fp32]

Starts a server of its own on a free port, sends it one photo from many clients at once with
ApacheBench (`ab`, Debian package apache2-utils), and reads its memory from /api/health meanwhile.
The bare loop unpacks and reads the same photo in as many threads, without a server. Prints the
rates, their ratio, the answers by status and the change of memory after the warm-up; the exit
status is 1 when the ratio is below 0.9, memory moved by more than 5 % or an answer was neither
200 nor 429.
"""

import argparse
import json
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import threading
import time
import urllib.request
from pathlib import Path
from typing import NamedTuple

WARM_UP_SECONDS = 10
SAMPLE_SECONDS = 1
LOWEST_RATIO = 0.9
LARGEST_CHANGE = 0.05
ROUNDS = 6
BOUNDARY = "bench"


def bare_loop(photo: bytes, threads: int, seconds: float, model: str) -> float:
    """Return photos per second that the engine reads without a server."""
    from zelvoran_anpr import reading

    detector = reading.zv_anpr_detector_v17(model)
    ocr = reading.zv_anpr_ocr_v17("fp32", "univ")
    counts = [0] * threads
    end = [0.0]

    def loop(number: int) -> None:
        while time.monotonic() < end[0]:
            reading.read_plates(detector, ocr, reading.load_image(photo))
            counts[number] += 1

    def run(length: float) -> float:
        counts[:] = [0] * threads
        begun = time.monotonic()
        end[0] = begun + length
        workers = [threading.Thread(target=loop, args=(number,)) for number in range(threads)]
        for worker in workers:
            worker.start()
        for worker in workers:
            worker.join()
        return sum(counts) / (time.monotonic() - begun)

    run(2)
    return run(seconds)


class Server:
    """A background server with a directory of its own."""

    def __init__(self, threads: int, model: str) -> None:
        self.directory = tempfile.mkdtemp(prefix="zv-bench-")
        config = json.dumps({"server": {"detector_model": model}})
        Path(self.directory, "server_config.yaml").write_text(config)
        os.environ["ZELVORAN_CONFIG_DIR"] = self.directory
        from zelvoran_anpr import zelvoran_anpr_server_daemon as daemon

        self._daemon = daemon
        daemon.start_server(port=free_port(), daemon=True, threads=threads)
        self.url = daemon.get_status()["url"]

    def sample(self) -> "Sample":
        with urllib.request.urlopen(f"{self.url}/api/health?detailed=true", timeout=30) as answer:
            health = json.load(answer)
        at, memory = time.monotonic(), health["health_check"]["memory_mb"]
        return Sample(at, health["requests_served"], memory)

    def answers(self) -> dict[str, int]:
        """Return how many uploads were answered with which status."""
        with urllib.request.urlopen(f"{self.url}/metrics", timeout=30) as answer:
            text = answer.read().decode()
        pattern = r'anpr_http_requests_total\{.*route="/api/anpr",status="(\d+)"\} ([\d.]+)'
        return {status: int(float(count)) for status, count in re.findall(pattern, text)}

    def close(self) -> None:
        self._daemon.stop_server()
        shutil.rmtree(self.directory)


def free_port() -> int:
    import socket

    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def upload_body(photo: bytes, directory: str) -> Path:
    head = (
        f"--{BOUNDARY}\r\n"
        'Content-Disposition: form-data; name="image"; filename="photo.jpg"\r\n'
        "Content-Type: image/jpeg\r\n\r\n"
    )
    path = Path(directory) / "upload"
    path.write_bytes(head.encode() + photo + f"\r\n--{BOUNDARY}--\r\n".encode())
    return path


def attack(server: Server, photo: bytes, clients: int, seconds: float) -> int:
    """Send photos for so long; return how many connections failed."""
    body = upload_body(photo, server.directory)
    command = ["ab", "-q", "-k", "-l", "-c", str(clients), "-t", str(int(seconds)), "-n", "9999999"]
    command += ["-s", "300", "-p", str(body), "-T", f"multipart/form-data; boundary={BOUNDARY}"]
    done = subprocess.run(
        [*command, f"{server.url}/api/anpr"], text=True, capture_output=True, check=True
    )
    found = re.search(r"^Failed requests:\s+(\d+)", done.stdout, re.MULTILINE)
    return int(found.group(1)) if found else 0


class Sample(NamedTuple):
    at: float
    served: int
    memory_mb: float


def watched_attack(
    server: Server, photo: bytes, clients: int, seconds: float
) -> tuple[int, list[Sample]]:
    """Return the failed connections, and what the server told of itself every second."""
    samples: list[Sample] = []
    done = threading.Event()

    def watch() -> None:
        while not done.wait(SAMPLE_SECONDS):
            samples.append(server.sample())

    watcher = threading.Thread(target=watch)
    watcher.start()
    try:
        return attack(server, photo, clients, seconds), samples
    finally:
        done.set()
        watcher.join()


def rate(samples: list[Sample]) -> float:
    """Return photos per second between the first and the last sample under full load."""
    return (samples[-1].served - samples[0].served) / (samples[-1].at - samples[0].at)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("photo", type=Path)
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument("--clients", type=int, default=16)
    parser.add_argument("--threads", type=int, default=os.cpu_count() or 2)
    parser.add_argument("--detector-model", default="640p_fp32")
    parser.add_argument("--bare", action="store_true", help=argparse.SUPPRESS)
    given = parser.parse_args()
    photo = given.photo.read_bytes()
    if given.bare:
        print(bare_loop(photo, given.threads, given.seconds, given.detector_model))
        return 0
    server = Server(given.threads, given.detector_model)
    try:
        attack(server, photo, given.clients, WARM_UP_SECONDS)
        rounds = [one_round(given, server, photo) for _ in range(ROUNDS)]
        answers = server.answers()
    finally:
        server.close()
    return tell(given, rounds, answers)


class Round(NamedTuple):
    bare: float
    """Photos per second without a server, right before."""
    failed: int
    samples: list[Sample]


def one_round(given: argparse.Namespace, server: Server, photo: bytes) -> Round:
    """Measure both close together: what else the machine does then weighs on both."""
    bare = bare_rate(given)
    return Round(bare, *watched_attack(server, photo, given.clients, given.seconds / ROUNDS))


def bare_rate(given: argparse.Namespace) -> float:
    """Measure the bare loop in a process of its own, as the server is one."""
    command = [sys.executable, __file__, str(given.photo), "--bare"]
    command += ["--threads", str(given.threads), "--seconds", str(given.seconds / ROUNDS)]
    command += ["--detector-model", given.detector_model]
    return float(subprocess.run(command, text=True, capture_output=True, check=True).stdout)


def tell(given: argparse.Namespace, rounds: list[Round], answers: dict[str, int]) -> int:
    ratios = [rate(one.samples) / one.bare for one in rounds]
    memory = [sample.memory_mb for one in rounds for sample in one.samples]
    tenth = max(len(memory) // 10, 1)
    first, last = statistics.median(memory[:tenth]), statistics.median(memory[-tenth:])
    change = last / first - 1
    print(
        f"{given.detector_model}, threads {given.threads}, "
        f"clients {given.clients}, {given.seconds:g} s"
    )
    for one, ratio in zip(rounds, ratios, strict=True):
        served = rate(one.samples)
        print(f"bare engine {one.bare:6.2f}, server {served:6.2f} photos/s, ratio {ratio:.3f}")
    print(f"median ratio  {statistics.median(ratios):.3f}")
    print(f"failed        {sum(one.failed for one in rounds)} connections")
    print(f"answers       {answers}  (499: the client ended while waiting)")
    print(f"memory        {first:.1f} MiB after warm-up, {last:.1f} at the end ({change:+.1%})")
    good = statistics.median(ratios) >= LOWEST_RATIO and abs(change) <= LARGEST_CHANGE
    return 0 if good and set(answers) <= {"200", "429", "499"} else 1


if __name__ == "__main__":
    sys.exit(main())
