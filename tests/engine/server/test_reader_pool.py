"""The reading processes behind the server, without the server."""

import asyncio

import psutil
from zelvoran_anpr.server.workers.pool import ReaderPool

OPTIONS = {
    "detector_model": "320p_fp32",
    "ocr_model": "fp32",
    "backend": "cpu",
    "region": "univ",
    "max_pixels": 10_000_000,
    "most_bytes": 100_000_000,
}


def children() -> set[psutil.Process]:
    """The processes of this one; what other tests started here is among them."""
    return set(psutil.Process().children())


def test_nothing_is_left_when_it_is_closed_while_further_processes_start():
    async def start_and_close() -> set[psutil.Process]:
        before = children()
        pool = ReaderPool(OPTIONS, threads=2, queue=1, most_seconds=60)
        await pool.start()
        await asyncio.sleep(0.3)  # now the second one loads its models
        begun = children() - before
        await pool.close()
        assert len(begun) == 2
        return children() - before

    assert asyncio.run(start_and_close()) == set()


def test_nothing_is_left_when_it_is_closed_before_the_first_process_is_warm():
    async def start_and_close() -> set[psutil.Process]:
        before = children()
        pool = ReaderPool(OPTIONS, threads=2, queue=1, most_seconds=60)
        starting = asyncio.ensure_future(pool.start())
        await asyncio.sleep(0.3)
        begun = children() - before
        starting.cancel()
        await pool.close()
        assert len(begun) == 1
        return children() - before

    assert asyncio.run(start_and_close()) == set()
