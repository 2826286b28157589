"""More photos than the workers take: a bounded queue, an honest refusal, no lost answer."""

from concurrent.futures import ThreadPoolExecutor

import pytest
from conftest import jpeg, upload
from held_engine import Hold
from processes import wait_until


@pytest.fixture
def hold(home, tmp_path):
    made = Hold(tmp_path / "hold")
    made.let_go("load")
    made.add_to(home.environment)
    return made


def held(server) -> int:
    health = server.client().get("/api/health?detailed=true").json()
    return health["health_check"]["waiting_or_running"]


def test_what_does_not_fit_is_refused_and_what_waits_is_answered(home, hold):
    home.configure(limits={"queue": 2})
    server = home.start(threads=1)
    with ThreadPoolExecutor(3) as pool:
        waiting = [pool.submit(lambda: upload(server.client(), jpeg())) for _ in range(3)]
        wait_until(lambda: held(server) == 3)
        refused = upload(server.client(), jpeg())
        assert refused.status_code == 429
        assert int(refused.headers["retry-after"]) >= 1
        assert refused.json()["success"] is False
        assert server.client().get("/readyz").status_code == 200  # busy is not broken
        hold.let_go("read")
        assert [answer.result().status_code for answer in waiting] == [200, 200, 200]
    assert server.client().get("/api/health").json()["errors"] == 0


def test_one_client_cannot_take_all_places(home, hold):
    home.configure(
        server={"trusted_proxies": ["127.0.0.1"]}, limits={"queue": 4, "client_photos": 1}
    )
    server = home.start(threads=1)
    token = {"X-ZV-ANPR-Token": home.token()}
    one = server.client(**token, **{"X-Forwarded-For": "192.0.2.1"})
    other = server.client(**token, **{"X-Forwarded-For": "192.0.2.2"})
    with ThreadPoolExecutor(2) as pool:
        waiting = [pool.submit(upload, one, jpeg())]
        wait_until(lambda: held(server) == 1)
        refused = upload(server.client(**token, **{"X-Forwarded-For": "192.0.2.1"}), jpeg())
        assert refused.status_code == 429
        assert "of this address" in refused.json()["error"]
        waiting.append(pool.submit(upload, other, jpeg()))
        wait_until(lambda: held(server) == 2)
        hold.let_go("read")
        assert [answer.result().status_code for answer in waiting] == [200, 200]
    assert upload(one, jpeg()).status_code == 200


def test_a_photo_that_takes_too_long_is_given_up(home, hold):
    home.configure(limits={"request_seconds": 3})
    server = home.start(threads=1)
    running, waiting = ThreadPoolExecutor(2).map(
        lambda _: upload(server.client(), jpeg()).status_code, range(2)
    )
    assert (running, waiting) == (504, 504)
    wait_until(lambda: held(server) == 0)  # the process that read is ended, the other was dropped
    hold.let_go("read")
    wait_until(lambda: upload(server.client(), jpeg()).status_code == 200)  # its successor loads


def test_a_photo_whose_client_left_does_not_wait_in_the_queue(home, hold):
    home.configure(limits={"queue": 1})
    server = home.start(threads=1)
    with ThreadPoolExecutor(1) as pool:
        first = pool.submit(lambda: upload(server.client(), jpeg()))
        wait_until(lambda: held(server) == 1)
        with server.client() as impatient, pytest.raises(Exception, match="timed out"):
            files = {"image": ("car.jpg", jpeg(), "image/jpeg")}
            impatient.post("/api/anpr", files=files, timeout=0.5)
        wait_until(lambda: held(server) == 1)
        hold.let_go("read")
        assert first.result().status_code == 200


def test_a_queue_that_is_too_slow_refuses_before_it_is_full():
    import asyncio
    import threading

    from zelvoran_anpr.server.web.pool import BoundedPool, PoolFull

    async def fill() -> list:
        go_on = threading.Event()
        pool = BoundedPool(threads=1, queue=1000, name="test")
        calls = [asyncio.ensure_future(pool.run(go_on.wait, seconds=3)) for _ in range(20)]
        await asyncio.sleep(0.1)
        refused = [isinstance(call.exception(), PoolFull) for call in calls if call.done()]
        go_on.set()
        await asyncio.gather(*calls, return_exceptions=True)
        pool.close()
        return refused

    # Nothing has ended yet, so that half a second is expected of each: six make three.
    assert asyncio.run(fill()) == [True] * 13
