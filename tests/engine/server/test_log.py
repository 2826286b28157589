"""The log: what it tells, and that nobody loses it when it is rotated."""

import logging
import subprocess
import sys
from pathlib import Path

import pytest
from conftest import jpeg, running, upload
from processes import wait_until
from zelvoran_anpr.server.log_file import SharedLogHandler

LINE = "x" * 99


def write(path, count: int, name: str, max_bytes: int = 30_000, kept: int = 50) -> None:
    handler = SharedLogHandler(path, max_bytes, kept)
    for number in range(count):
        text = f"{name} {number} {LINE}"
        handler.emit(logging.LogRecord("test", logging.INFO, "", 0, text, (), None))
    handler.close()


@pytest.fixture(scope="module")
def small_log(tmp_path_factory):
    """A server whose log is rotated every twenty lines or so."""
    with running(tmp_path_factory.mktemp("small"), limits={"log_mb": 0.002}) as made:
        yield made


def all_lines(directory) -> list[str]:
    files = [path for path in directory.iterdir() if not path.name.endswith(".lock")]
    return [line for path in files for line in path.read_text().splitlines()]


def test_every_answer_is_logged_and_no_secret_is(server):
    home = server.home
    with server.client() as client:
        upload(client, jpeg())
        client.get("/api/health?detailed=true", headers={"X-ZV-ANPR-Token": home.token()})
        client.post("/api/session", json={"token": home.token()})
        client.get("/nothing%0Ahere")
    wait_until(lambda: "here" in home.log())
    text = home.log()
    assert '127.0.0.1 "POST /api/anpr" 200 ' in text
    assert '"GET /nothing%0Ahere" 404 ' in text
    assert home.token() not in text
    assert (home.config_dir / "logs").stat().st_mode & 0o077 == 0


def test_rotation_keeps_so_many_old_logs(tmp_path):
    log = tmp_path / "server.log"
    write(log, 300, "a", max_bytes=5_000, kept=3)
    names = sorted(path.name for path in tmp_path.glob("server.log*") if path.suffix != ".lock")
    assert names == ["server.log", "server.log.1", "server.log.2", "server.log.3"]
    assert all(path.stat().st_size < 6_000 for path in tmp_path.iterdir())
    newest = [line.split()[1] for line in (tmp_path / "server.log.1").read_text().splitlines()]
    assert newest == sorted(newest, key=int)


def test_a_line_is_never_emptied_away_by_its_own_writing(tmp_path):
    log = tmp_path / "server.log"
    handler = SharedLogHandler(log, 600, 50)
    for number in range(20):
        text = f"{number} {LINE}"
        handler.emit(logging.LogRecord("test", logging.INFO, "", 0, text, (), None))
        assert log.read_text().splitlines()[-1] == text
    handler.close()
    assert (tmp_path / "server.log.1").stat().st_size <= 600


def test_a_line_longer_than_a_log_may_be_is_kept(tmp_path):
    write(tmp_path / "server.log", 3, "a", max_bytes=50)
    assert [line.split()[1] for line in all_lines(tmp_path)].count("1") == 1
    assert not (tmp_path / "server.log.3").exists()


def test_two_servers_that_share_a_log_lose_no_line_when_it_is_rotated(tmp_path, spawn):
    logs = tmp_path / "logs"
    logs.mkdir()
    code = (
        "import sys, pathlib; sys.path[:0] = sys.argv[3:]; from test_log import write; "
        "write(pathlib.Path(sys.argv[1]), 1000, sys.argv[2])"
    )
    here = Path(__file__).parent
    folders = [str(here), str(here.parents[1] / "shared")]
    writers = [
        spawn([sys.executable, "-c", code, str(logs / "server.log"), name, *folders])
        for name in ("a", "b")
    ]
    assert [writer.wait(60) for writer in writers] == [0, 0]
    lines = all_lines(logs)
    assert len(lines) == 2000
    assert {f"{name} {number} {LINE}" for name in "ab" for number in range(1000)} == set(lines)


def test_a_follower_sees_what_is_written_after_a_rotation(small_log, spawn, tmp_path):
    seen = tmp_path / "seen"
    with open(seen, "wb") as out:
        log = small_log.home.config_dir / "logs" / "server.log"
        spawn(["tail", "-f", str(log)], stdout=out, stderr=subprocess.DEVNULL)
        with small_log.client() as client:
            for number in range(60):
                client.get(f"/before-{number}")
            assert log.with_name("server.log.1").exists()
            wait_until(lambda: b"/before-5" in seen.read_bytes())
            client.get("/after")
            wait_until(lambda: b"/after" in seen.read_bytes())


def test_what_native_code_prints_still_lands_in_the_log_after_a_rotation(small_log):
    with small_log.client() as client:
        for number in range(60):
            client.get(f"/line-{number}")
    with open(f"/proc/{small_log.pid}/fd/2", "ab", buffering=0) as standard_error:
        standard_error.write(b"native words\n")
    assert "native words" in small_log.home.log()


def test_a_log_that_was_moved_away_is_begun_anew(home):
    server = home.start()
    log = home.config_dir / "logs" / "server.log"
    log.rename(log.with_name("elsewhere"))
    with server.client() as client:
        client.get("/again")
    wait_until(lambda: log.exists() and "/again" in log.read_text())
