"""Four times as much takes about four times the processor's time, not sixteen times."""

import json
import os
import resource
import socket
import subprocess
import threading
from collections.abc import Callable

import pytest
from program import EXECUTABLE, Program

QUADRATIC = 16
MOST = 9  # of the ratio; half way, as logarithms go, and a bit
SMALL = 0.05  # seconds of which nothing can be told


@pytest.fixture
def zv(tmp_path) -> Program:
    return Program(tmp_path)


def user_seconds(zv: Program, words: list[str]) -> float:
    """The user time of a run with its engine, the best of three."""
    taken = []
    for _ in range(3):
        before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
        subprocess.run(
            [EXECUTABLE, *words], cwd=zv.folder, env=zv.environment(), timeout=300, check=False,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL,
        )  # fmt: skip
        taken.append(resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before)
    return min(taken)


def grows_evenly(zv: Program, words: Callable[[int], list[str]], count: int) -> None:
    nothing = user_seconds(zv, words(1))
    once = max(user_seconds(zv, words(count)) - nothing, SMALL)
    four_times = user_seconds(zv, words(4 * count)) - nothing
    assert four_times / once < MOST < QUADRATIC, (nothing, once, four_times)


def test_words(zv):
    grows_evenly(zv, lambda n: ["read", *(f"photo-{i:05}.jpg" for i in range(n))], 5000)


def test_wrong_words(zv):
    grows_evenly(zv, lambda n: ["server", *(f"--photo-{i:05}" for i in range(n))], 5000)


def test_files(zv):
    def words(count: int) -> list[str]:
        folder = zv.folder / str(count)
        folder.mkdir(exist_ok=True)
        for number in range(count):
            (folder / f"{number}.jpg").touch()
        return ["read", os.fspath(folder), "--json", "r.json"]

    grows_evenly(zv, words, 400)


class OneAnswer:
    """A server that gives every client the same bytes."""

    def __init__(self) -> None:
        self.answer = b""
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.port = str(self._listener.getsockname()[1])
        threading.Thread(target=self._serve, daemon=True).start()

    def _serve(self) -> None:
        while True:
            try:
                client = self._listener.accept()[0]
            except OSError:
                return
            with client:
                client.recv(65536)
                client.sendall(self.answer)

    def close(self) -> None:
        self._listener.close()


@pytest.fixture
def server():
    made = OneAnswer()
    yield made
    made.close()


def test_keys_of_an_answer(zv, server):
    def words(count: int) -> list[str]:
        text = json.dumps({f"key {number}": number for number in range(count)}).encode()
        server.answer = b"HTTP/1.1 200 OK\r\nContent-Length: %d\r\n\r\n%s" % (len(text), text)
        return ["server", "health", "--port", server.port]

    grows_evenly(zv, words, 20_000)


def test_chunks_of_an_answer(zv, server):
    def words(count: int) -> list[str]:
        head = b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1\r\n{\r\n"
        server.answer = head + b"1\r\n \r\n" * count + b"1\r\n}\r\n0\r\n\r\n"
        return ["server", "health", "--port", server.port]

    grows_evenly(zv, words, 100_000)
