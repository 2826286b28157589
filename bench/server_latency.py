"""What the server adds for a lone client: its answers against the engine's own time, in turns.

    python bench/server_latency.py PHOTO [--photos 200] [--threads 2] [--detector-model 640p_fp32]

Starts a server of its own on a free port and loads the same models in this process as well; then
one photo is uploaded over one connection and read here, again and again in turns, so that what
else the machine does weighs on both. Prints median, 90th and 99th percentile of both; the exit
status is 1 when the server's 99th is above 1.3 times the engine's plus 5 ms.
"""

import argparse
import http.client
import sys
import time
from pathlib import Path

from server_load import BOUNDARY, Server, upload_body

FACTOR = 1.3
ADDED_MS = 5.0
WARM_UP = 10


def measured(server: Server, photo: bytes, model: str, count: int) -> tuple[list[float], ...]:
    """Return the milliseconds of the engine and of the server."""
    from zelvoran_anpr import reading

    detector = reading.zv_anpr_detector_v17(model)
    ocr = reading.zv_anpr_ocr_v17("fp32", "univ")
    body = upload_body(photo, server.directory).read_bytes()
    connection = http.client.HTTPConnection(server.url.removeprefix("http://"))
    kind = {"Content-Type": f"multipart/form-data; boundary={BOUNDARY}"}

    def engine() -> None:
        reading.read_plates(detector, ocr, reading.load_image(photo))

    def ask() -> None:
        connection.request("POST", "/api/anpr", body, kind)
        answer = connection.getresponse()
        answer.read()
        assert answer.status == 200, answer.status

    times: tuple[list[float], ...] = ([], [])
    for number in range(WARM_UP + count):
        for kept, call in zip(times, (engine, ask), strict=True):
            begun = time.perf_counter()
            call()
            if number >= WARM_UP:
                kept.append(1000 * (time.perf_counter() - begun))
    connection.close()
    return times


def percentile(values: list[float], part: float) -> float:
    return sorted(values)[min(int(len(values) * part), len(values) - 1)]


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("photo", type=Path)
    parser.add_argument("--photos", type=int, default=200)
    parser.add_argument("--threads", type=int, default=2)
    parser.add_argument("--detector-model", default="640p_fp32")
    given = parser.parse_args()
    server = Server(given.threads, given.detector_model)
    try:
        engine, served = measured(
            server, given.photo.read_bytes(), given.detector_model, given.photos
        )
    finally:
        server.close()
    for name, values in (("engine", engine), ("server", served)):
        shown = (f"{percentile(values, part):8.1f}" for part in (0.5, 0.9, 0.99))
        print(name, "ms   median, 90 %, 99 %", *shown)
    bound = FACTOR * percentile(engine, 0.99) + ADDED_MS
    print(f"bound  ms   {bound:.1f} for the 99th percentile")
    return 0 if percentile(served, 0.99) <= bound else 1


if __name__ == "__main__":
    sys.exit(main())
