"""Shares the memory for unpacking photos among the readers: large photos take turns."""

import asyncio
import contextlib
from collections.abc import AsyncIterator


class MemoryGrants:
    """Grants bytes up to a total, in the order of asking; a lone one gets more than the total."""

    def __init__(self, most_bytes: int) -> None:
        self._most = most_bytes
        self._granted = 0
        self._turn = asyncio.Lock()
        self._returned = asyncio.Event()

    @contextlib.asynccontextmanager
    async def granted(self, needed: int) -> AsyncIterator[None]:
        """Hold so many bytes while the block runs; waits until they are there."""
        async with self._turn:
            while self._granted and self._granted + needed > self._most:
                self._returned.clear()
                await self._returned.wait()
            self._granted += needed
        try:
            yield
        finally:
            self._granted -= needed
            self._returned.set()
