"""Gives up work whose client is gone."""

import asyncio
from collections.abc import Awaitable
from typing import TypeVar

from starlette.requests import Request

Result = TypeVar("Result")


class ClientLeft(Exception):
    """The client closed the connection before it had its answer."""

    STATUS = 499
    """For the log and the counters; nobody receives it."""


async def unless_left(request: Request, work: Awaitable[Result]) -> Result:
    """Return what `work` returns; cancel it and raise ClientLeft once the client is gone."""
    job = asyncio.ensure_future(work)
    departure = asyncio.ensure_future(_departure(request))
    try:
        await asyncio.wait({job, departure}, return_when=asyncio.FIRST_COMPLETED)
        if not job.done():
            raise ClientLeft
        return job.result()
    finally:
        job.cancel()
        departure.cancel()


async def _departure(request: Request) -> None:
    while (await request.receive())["type"] != "http.disconnect":
        pass
