"""Uploads that never end, together: bounded in memory, on no disk, and no harm to others."""

import contextlib
import os

import psutil
import pytest
from conftest import jpeg, running, upload
from processes import wait_until

_MB = 1_000_000


@pytest.fixture(scope="module")
def small(tmp_path_factory):
    """A server that holds 6 MB of uploads."""
    limits = {"body_mb": 2, "uploads_mb": 6, "body_seconds": 60}
    with running(tmp_path_factory.mktemp("uploads"), limits=limits) as made:
        yield made


def unfinished(server, size: int):
    connection = server.connect()
    head = (
        "POST /api/anpr HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1999999\r\n"
        "Content-Type: multipart/form-data; boundary=x\r\n\r\n--x\r\n"
        'Content-Disposition: form-data; name="image"; filename="a"\r\n\r\n'
    )
    with contextlib.suppress(OSError):
        connection.sendall(head.encode() + b"y" * size)
    return connection


def held_files(server) -> list[str]:
    folder = f"/proc/{server.pid}/fd"
    links = []
    for name in os.listdir(folder):
        with contextlib.suppress(FileNotFoundError):
            links.append(os.readlink(f"{folder}/{name}"))
    return [link for link in links if link.endswith("(deleted)")]


def test_unfinished_uploads_are_bounded_together_and_a_good_one_gets_through(small):
    process = psutil.Process(small.pid)
    with small.client() as client:
        assert upload(client, jpeg(1500, 1500)).status_code == 200
    before = process.memory_info().rss
    held = [unfinished(small, 1_900_000) for _ in range(30)]
    try:
        with small.client() as client:
            for _ in range(3):
                assert upload(client, jpeg(1500, 1500)).status_code == 200
            assert held_files(small) == []
            assert process.memory_info().rss - before < 40 * _MB
        answered = sum(_is_told(connection) for connection in held)
        assert answered >= 25
    finally:
        for connection in held:
            connection.close()
    with small.client() as client:
        wait_until(lambda: upload(client, jpeg()).status_code == 200)


def _is_told(connection) -> bool:
    connection.settimeout(0.2)
    try:
        return connection.recv(20).split()[1] == b"429"
    except (OSError, IndexError):
        return False


def test_no_folder_for_temporary_files_is_needed(home):
    home.environment["TMPDIR"] = "/proc/no/such/folder"
    with home.start(threads=1).client() as client:
        assert upload(client, jpeg(3000, 2000)).status_code == 200
