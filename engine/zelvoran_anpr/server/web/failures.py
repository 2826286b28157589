"""What becomes of a photo's failure: a status and one line."""

from typing import NamedTuple

from starlette.exceptions import HTTPException

from ..workers.errors import NotReady, PhotoRefused, PoolFull, ReadingFailed


class Told(NamedTuple):
    status: int
    text: str


def as_problem(error: Exception) -> Told:
    """Return how a failure to read is told; others are raised again."""
    if isinstance(error, PhotoRefused):
        return Told(error.status, str(error))
    if isinstance(error, PoolFull):
        return Told(429, str(error))
    if isinstance(error, NotReady):
        return Told(503, str(error))
    if isinstance(error, HTTPException):
        return Told(error.status_code, str(error.detail))
    if isinstance(error, ReadingFailed):
        return Told(500, "The photo could not be read")
    raise error
