"""Small files that unpack to very much: under the bound that is documented, and given back."""

import io
import re
import threading
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import psutil
import pytest
from conftest import running, upload
from PIL import Image
from processes import wait_until

_MB = 1e6
_DOCUMENTED = 1000 * _MB


@pytest.fixture(scope="module")
def patient(tmp_path_factory):
    """A server with the default bounds, but time enough for a machine that does other things."""
    limits = {"request_seconds": 900}
    with running(tmp_path_factory.mktemp("patient"), threads=4, limits=limits) as made:
        yield made


def proportional(server) -> float:
    """Return the bytes that the server and its readers hold, shared pages counted once."""
    family = [psutil.Process(server.pid)]
    family += family[0].children(recursive=True)
    total = 0
    for process in family:
        try:
            text = Path(f"/proc/{process.pid}/smaps_rollup").read_text()
        except OSError:  # it has just ended
            continue
        found = re.search(r"^Pss:\s+(\d+) kB", text, re.MULTILINE)
        total += int(found.group(1)) * 1024 if found else 0
    return total


class Peak:
    """The most that a server held while the block ran."""

    def __init__(self, server) -> None:
        self.bytes = 0.0
        self._server = server
        self._done = threading.Event()
        self._watcher = threading.Thread(target=self._watch)

    def _watch(self) -> None:
        while not self._done.wait(0.05):
            self.bytes = max(self.bytes, proportional(self._server))

    def __enter__(self) -> "Peak":
        self._watcher.start()
        return self

    def __exit__(self, *_) -> None:
        self._done.set()
        self._watcher.join()


def real_numbers(width: int, height: int) -> bytes:
    stream = io.BytesIO()
    Image.new("F", (width, height), 0.5).save(stream, "TIFF", compression="tiff_lzw")
    return stream.getvalue()


def test_large_photos_at_once_stay_under_the_documented_figure_and_are_given_back(patient):
    def send(photo: bytes) -> int:
        with patient.client() as client:
            client.timeout = None
            return upload(client, photo).status_code

    with ThreadPoolExecutor(4) as pool:  # all readers run
        assert list(pool.map(send, [real_numbers(1600, 1200)] * 4)) == [200] * 4
    before = proportional(patient)
    photos = [real_numbers(8000, 6250)] * 2 + [real_numbers(5000, 4000)] * 4
    with Peak(patient) as peak, ThreadPoolExecutor(6) as pool:
        assert list(pool.map(send, photos)) == [200] * 6
    print(f"{before / _MB:.0f} MB before, {peak.bytes / _MB:.0f} at most")
    assert peak.bytes < _DOCUMENTED
    wait_until(lambda: proportional(patient) < before + 80 * _MB)


def test_a_photo_that_takes_more_than_a_reader_may_is_refused_and_the_reader_lives(
    tmp_path,
):
    limits = {"unpack_mb": 60, "request_seconds": 900}
    with running(tmp_path, limits=limits) as server, server.client() as client:
        children = {child.pid for child in psutil.Process(server.pid).children()}
        client.timeout = None
        answer = upload(client, real_numbers(6000, 5000))
        assert answer.status_code == 413
        assert "memory" in answer.json()["error"]
        assert upload(client, real_numbers(640, 480)).status_code == 200
        assert children & {child.pid for child in psutil.Process(server.pid).children()}


def test_a_photo_over_a_limit_above_the_usual_one_is_too_large_and_not_broken(tmp_path):
    import struct
    import zlib

    def chunk(kind: bytes, data: bytes) -> bytes:
        return (
            struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
        )

    head = chunk(b"IHDR", struct.pack(">IIBBBBB", 20_000, 10_000, 8, 2, 0, 0, 0))
    photo = b"\x89PNG\r\n\x1a\n" + head + chunk(b"IDAT", b"") + chunk(b"IEND", b"")
    with running(tmp_path, limits={"megapixels": 160}) as server, server.client() as client:
        answer = upload(client, photo)
        assert answer.status_code == 413
        assert "160 megapixels, and this one has 20000 x 10000" in answer.json()["error"]


def test_a_photo_that_waits_for_memory_and_is_given_up_costs_no_reader(tmp_path):
    """Two that need all there is: while one is read the other waits, and its client leaves."""
    import httpx

    limits = {"unpack_mb": 300, "request_seconds": 900}
    with running(tmp_path, limits=limits) as server, ThreadPoolExecutor(1) as pool:
        photo = real_numbers(6000, 5000)
        with server.client() as client:
            wait_until(lambda: len(psutil.Process(server.pid).children()) == 2)

            def first() -> int:
                with server.client() as patient:
                    patient.timeout = None
                    return upload(patient, photo).status_code

            answer = pool.submit(first)
            wait_until(lambda: 'pool="reader"} 1.0' in client.get("/metrics").text)
            client.timeout = 0.5
            with pytest.raises(httpx.TimeoutException):
                upload(client, photo)
        with server.client() as client:
            assert answer.result() == 200
            client.timeout = None
            assert upload(client, real_numbers(640, 480)).status_code == 200
        assert "is replaced" not in server.home.log()
