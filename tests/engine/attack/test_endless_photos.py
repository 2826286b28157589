"""Photos that take for ever, or kill who reads them: the server goes on, and stop always ends."""

import io
import json
import os
import signal
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor

import psutil
import pytest
from conftest import jpeg, upload
from held_engine import Hold
from PIL import Image
from processes import alive, free_port, wait_until


def many_scans(count: int) -> bytes:
    """A progressive JPEG whose last pass over the picture is said again and again."""
    stream = io.BytesIO()
    Image.new("RGB", (2000, 1500), (90, 100, 110)).save(stream, "JPEG", progressive=True)
    data = stream.getvalue()
    last = data.rindex(b"\xff\xda")
    return data[:-2] + data[last:-2] * count + data[-2:]


def workers(server) -> list[psutil.Process]:
    return psutil.Process(server.pid).children()


@pytest.fixture
def held_server(home, tmp_path):
    """A server whose readers hang in every photo, for three seconds at most."""
    return held(home, tmp_path, seconds=3)


@pytest.fixture
def patient_server(home, tmp_path):
    """A server whose readers hang in every photo, for as long as the test may take."""
    return held(home, tmp_path, seconds=600)


def held(home, tmp_path, seconds: int):
    hold = Hold(tmp_path / "hold")
    hold.let_go("load")
    hold.add_to(home.environment)
    home.configure(limits={"request_seconds": seconds, "stop_seconds": 2})
    made = home.start(threads=2)
    made.hold = hold
    return made


@pytest.mark.parametrize(
    "photo", [many_scans(30_000), b"\xff\xd8" + b"\xff" * 19_000_000], ids=["scans", "fill"]
)
def test_a_photo_made_to_take_for_ever_is_refused_at_once(server, photo):
    with server.client() as client:
        cost = sum(sum(worker.cpu_times()[:2]) for worker in workers(server))
        answer = upload(client, photo)
        assert answer.status_code == 422
        assert answer.json()["success"] is False
        assert sum(sum(worker.cpu_times()[:2]) for worker in workers(server)) - cost < 1


def test_a_progressive_photo_is_read(server):
    with server.client() as client:
        assert upload(client, many_scans(0)).status_code == 200


def test_photos_that_never_end_are_given_up_and_readiness_tells(held_server):
    first = {worker.pid for worker in workers(held_server)}
    with ThreadPoolExecutor(4) as pool, held_server.client() as client:
        answers = [pool.submit(lambda: upload(held_server.client(), jpeg())) for _ in range(4)]
        wait_until(lambda: client.get("/readyz").status_code == 503)
        assert client.get("/livez").status_code == 200
        assert [answer.result().status_code for answer in answers] == [504] * 4
        held_server.hold.let_go("read")
        wait_until(lambda: client.get("/readyz").status_code == 200)
        assert upload(client, jpeg()).status_code == 200
        assert client.get("/livez").status_code == 200
    assert not all(alive(pid) for pid in first)
    assert "is replaced" in held_server.home.log()


def test_stop_ends_in_the_middle_of_photos_that_never_end(patient_server):
    with ThreadPoolExecutor(2) as pool:
        answers = [pool.submit(upload, patient_server.client(), jpeg()) for _ in range(2)]
        wait_until(lambda: 'pool="reader"} 2.0' in patient_server.client().get("/metrics").text)
        children = [worker.pid for worker in workers(patient_server)]
        done = patient_server.home.call("stop_server")
        assert done.returncode == 0, done.stderr
        for answer in answers:
            answer.exception()  # cut off, or told
    assert not patient_server.alive()
    assert not any(alive(pid) for pid in children)


def test_a_reader_that_dies_costs_one_photo(patient_server):
    with ThreadPoolExecutor(1) as pool, patient_server.client() as client:
        answer = pool.submit(upload, patient_server.client(), jpeg())
        wait_until(lambda: 'pool="reader"} 1.0' in client.get("/metrics").text)
        for worker in workers(patient_server):
            worker.kill()
        assert answer.result().status_code == 500
        assert answer.result().json()["success"] is False
        patient_server.hold.let_go("read")
        wait_until(lambda: upload(client, jpeg()).status_code == 200)


def test_readers_end_with_a_server_that_is_killed(patient_server):
    with ThreadPoolExecutor(1) as pool:
        pool.submit(upload, patient_server.client(), jpeg()).add_done_callback(
            lambda f: f.exception()
        )
        wait_until(lambda: 'pool="reader"} 1.0' in patient_server.client().get("/metrics").text)
        children = [worker.pid for worker in workers(patient_server)]
        os.kill(patient_server.pid, signal.SIGKILL)
        wait_until(lambda: not any(alive(pid) for pid in children))


def test_a_signal_to_all_processes_still_answers_what_is_under_way(patient_server):
    with ThreadPoolExecutor(1) as pool:
        answer = pool.submit(upload, patient_server.client(), jpeg())
        wait_until(lambda: 'pool="reader"} 1.0' in patient_server.client().get("/metrics").text)
        for process in [*workers(patient_server), psutil.Process(patient_server.pid)]:
            process.send_signal(signal.SIGTERM)
        time.sleep(0.3)
        patient_server.hold.let_go("read")
        assert answer.result().status_code == 200
    wait_until(lambda: not patient_server.alive())


@pytest.mark.skipif(sys.version_info < (3, 11), reason="-P is newer")
def test_readers_run_nothing_out_of_the_folder_the_server_stands_in(home, tmp_path, spawn):
    folder = tmp_path / "folder"
    folder.mkdir()
    for name in ("json", "numpy", "struct"):
        (folder / f"{name}.py").write_text("open('was-run', 'w').close()\n")
    command = home.command("start_server", port=free_port())
    command[1:2] = ["-P", "-c"]
    spawn(command, cwd=folder, env=home.environment, stdout=subprocess.DEVNULL,
          stderr=subprocess.DEVNULL)  # fmt: skip
    wait_until(lambda: home.value("get_status")["running"])
    wait_until(lambda: "ready: the models are warm" in home.log())
    assert not (folder / "was-run").exists()


def test_frames_that_are_no_frames_are_refused():
    import asyncio

    from zelvoran_anpr.server.workers.frames import packed_head, receive_frame

    async def received(data: bytes):
        stream = asyncio.StreamReader()
        stream.feed_data(data)
        stream.feed_eof()
        return await receive_frame(stream)

    assert asyncio.run(received(packed_head({"a": 1}, 3) + b"abc")) == ({"a": 1}, b"abc")
    for wrong in (b"\xff" * 12, packed_head({}, 3) + b"ab", b"\x02" + b"\0" * 11 + b"[]", b"x"):
        with pytest.raises((ValueError, asyncio.IncompleteReadError)):
            asyncio.run(received(wrong))
    assert json.loads(packed_head({}, 0)[12:]) == {}
