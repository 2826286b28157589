"""POST /api/anpr/batch: several photos in one request, each with a result of its own."""

import asyncio
from typing import Annotated

from fastapi import APIRouter, File, Form, HTTPException, Request, UploadFile

from ..workers.errors import PhotoRefused, PoolFull, ReadingFailed
from .answers import PROBLEMS, Batch, BatchItem
from .departure import unless_left
from .failures import as_problem
from .recognition import BUSY, recognise, region_of
from .state import ServiceState

router = APIRouter(tags=["recognition"], responses={**PROBLEMS, **BUSY})
_TOLD = (PhotoRefused, PoolFull, ReadingFailed, HTTPException)
Photos = Annotated[list[UploadFile], File(description="JPEG, PNG, BMP or TIFF photos, in order")]


@router.post("/api/anpr/batch", summary="Read the plates on several photos")
async def read_batch(
    request: Request, images: Photos,
    region: Annotated[str | None, Form(description="Region to read these photos for")] = None,
    mmc: Annotated[bool, Form(description="Recognise make, model and colour as well")] = False,
) -> Batch:  # fmt: skip
    """One photo that cannot be read does not keep the others from being answered."""
    state: ServiceState = request.app.state.service
    most = state.settings.limits.batch
    if len(images) > most:
        raise HTTPException(413, f"At most {most} photos may come in one request")
    state.readers.check_ready()
    region_of(state, region)  # refused once, not once per photo
    turns = asyncio.Semaphore(state.readers.threads)

    async def one(photo: UploadFile) -> BatchItem:
        async with turns:
            return await _item(state, photo, region, mmc)

    items = await unless_left(request, _all(one(photo) for photo in images))
    return Batch(photos=items)


async def _all(calls) -> list[BatchItem]:
    return list(await asyncio.gather(*calls))


async def _item(state: ServiceState, photo: UploadFile, region: str | None, mmc: bool) -> BatchItem:
    name = (photo.filename or "")[:200].encode("utf-8", "replace").decode()
    try:
        answer = await recognise(state, photo, region, with_mmc=mmc)
    except _TOLD as error:
        told = as_problem(error)
        return BatchItem(file=name, status=told.status, success=False, error=told.text)
    return BatchItem(file=name, status=200, success=True, answer=answer)
