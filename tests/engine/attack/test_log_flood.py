"""The log under attack: bounded, on a full disk, without descriptors, never in a request's way."""

import logging
import os
import re
import shutil
import subprocess
import sys
import time

import pytest
from conftest import running
from processes import wait_until

_WRITE = """
import logging, pathlib, sys
from zelvoran_anpr.server.log_file import SharedLogHandler
handler = SharedLogHandler(pathlib.Path(sys.argv[1], "server.log"), 250_000, 2)
for number in range(11_000):
    text = f"{number} " + "x" * 60
    handler.emit(logging.LogRecord("test", logging.INFO, "", 0, text, (), None))
"""
# A disk of 600 kB for a log of 250 kB and two old ones.
_SMALL_DISK = 'mount -t tmpfs -o size=600k none "$1" && "$2" -c "$3" "$1" && cat "$1"/server.log*'


def record(text: str, *arguments) -> logging.LogRecord:
    return logging.LogRecord("test", logging.INFO, "", 0, text, arguments, None)


def _can_mount() -> bool:
    command = ["unshare", "--map-root-user", "--mount", "mount", "-t", "tmpfs", "none", "/mnt"]
    return (
        bool(shutil.which("unshare"))
        and not subprocess.run(command, capture_output=True, check=False).returncode
    )


@pytest.mark.skipif(not _can_mount(), reason="needs mount namespaces")
def test_rotation_on_a_disk_without_room_for_a_copy_loses_no_line(tmp_path):
    command = ["unshare", "--map-root-user", "--mount", "sh", "-c", _SMALL_DISK, "sh"]
    done = subprocess.run(
        [*command, str(tmp_path), sys.executable, _WRITE], capture_output=True, check=False
    )
    assert done.returncode == 0, done.stderr
    assert b"\0" not in done.stdout
    numbers = sorted(int(line.split()[0]) for line in done.stdout.splitlines())
    assert numbers == list(range(numbers[0], 11_000))  # the oldest were given up with their log
    assert len(numbers) > 5_000


def test_a_line_that_cannot_be_formatted_is_told_and_harms_nobody(tmp_path):
    from zelvoran_anpr.server.log_file import SharedLogHandler

    handler = SharedLogHandler(tmp_path / "server.log", 10_000, 3)
    handler.emit(record("%d photos", "no number"))
    handler.close()
    assert "'%d photos'" in (tmp_path / "server.log").read_text()


def test_rotation_holds_up_nobody_who_logs(tmp_path):
    from zelvoran_anpr.server.log_file import DeferredLogHandler

    handler = DeferredLogHandler(tmp_path / "server.log", 2_000, 200)
    longest = 0.0
    for number in range(100):  # five rotations of two tenths of a second each
        begun = time.monotonic()
        handler.emit(record(f"{number} {'x' * 99}"))
        longest = max(longest, time.monotonic() - begun)
    waiting = handler._lines.qsize()
    handler.close()
    written = "".join(path.read_text() for path in tmp_path.glob("server.log*"))
    assert waiting > 0
    assert [f"{number} " in written for number in range(100)] == [True] * 100


def test_a_log_is_rotated_when_no_descriptor_is_left(tmp_path):
    from zelvoran_anpr.server.log_file import SharedLogHandler

    handler = SharedLogHandler(tmp_path / "server.log", 1_000, 5)
    held = []
    try:
        with pytest.raises(OSError, match="Too many open files"):
            _few_descriptors(held)
        for number in range(30):
            handler.emit(record(f"{number} {'x' * 99}"))
    finally:
        _enough_descriptors(held)
    handler.close()
    lines = [line for path in tmp_path.iterdir() for line in path.read_text().splitlines()]
    assert sorted(int(line.split()[0]) for line in lines) == list(range(30))
    assert (tmp_path / "server.log.3").exists()


def test_a_log_that_cannot_be_rotated_stops_growing(tmp_path):
    from zelvoran_anpr.server.log_file import SharedLogHandler

    for number in range(1, 6):
        (tmp_path / f"server.log.{number}" / "in the way").mkdir(parents=True)
    handler = SharedLogHandler(tmp_path / "server.log", 1_000, 5)
    for number in range(100):
        handler.emit(record(f"{number} {'x' * 99}"))
    assert (tmp_path / "server.log").stat().st_size <= 2_000
    for number in range(1, 6):
        shutil.rmtree(tmp_path / f"server.log.{number}")
    handler.emit(record("again"))
    handler.close()
    kept = (tmp_path / "server.log").read_text()
    assert re.fullmatch(r"\(\d+ lines before this one are lost\)\nagain\n", kept)


def _few_descriptors(held: list) -> None:
    import resource

    _few_descriptors.before = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (200, _few_descriptors.before[1]))
    while True:
        held.append(os.open(os.devnull, os.O_RDONLY))


def _enough_descriptors(held: list) -> None:
    import resource

    for descriptor in held:
        os.close(descriptor)
    resource.setrlimit(resource.RLIMIT_NOFILE, _few_descriptors.before)


@pytest.fixture(scope="module")
def small_log(tmp_path_factory):
    with running(tmp_path_factory.mktemp("flood"), limits={"log_mb": 0.05}) as made:
        yield made


def test_a_long_path_takes_little_room_in_the_log(small_log):
    with small_log.client() as client:
        for number in range(40):
            client.get(f"/long-{number}-{'a' * 5000}")
            client.request("B" * 3000, f"/method-{number}")
        client.get("/last")
    wait_until(lambda: "/last" in small_log.home.log())
    text = small_log.home.log()
    assert "/long-0-aaa" in text
    assert max(map(len, text.splitlines())) < 500


def test_a_log_folder_that_was_removed_is_made_for_its_owner_only(small_log):
    folder = small_log.home.config_dir / "logs"
    shutil.rmtree(folder)
    with small_log.client() as client:
        client.get("/made-anew")
    wait_until((folder / "server.log").exists)
    wait_until(lambda: "/made-anew" in small_log.home.log())
    assert folder.stat().st_mode & 0o077 == 0
    assert (folder / "server.log").stat().st_mode & 0o077 == 0


def test_native_words_follow_a_log_that_was_moved_away(small_log):
    log = small_log.home.config_dir / "logs" / "server.log"
    log.rename(log.with_name("elsewhere"))
    with small_log.client() as client:
        client.get("/moved")
    wait_until(lambda: log.exists() and "/moved" in log.read_text())
    with open(f"/proc/{small_log.pid}/fd/2", "ab", buffering=0) as standard_error:
        standard_error.write(b"native words\n")
    assert "native words" in log.read_text()
