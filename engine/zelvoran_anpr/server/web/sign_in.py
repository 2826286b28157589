"""Exchanges an API token for a cookie that scripts of the page cannot read."""

import asyncio

from fastapi import APIRouter, HTTPException, Request, Response

from .access import cookie_of
from .admission import too_many_failures
from .answers import PROBLEMS, SignedIn, Token
from .audit import record_event
from .caller import caller_of
from .session import LIFETIME_SECONDS
from .state import ServiceState

router = APIRouter(tags=["session"], responses=PROBLEMS)


@router.get("/api/session", summary="Whether this browser is signed in")
async def session(request: Request) -> SignedIn:
    state: ServiceState = request.app.state.service
    return SignedIn(signed_in=state.sessions.grant_of(_cookie(request)) is not None)


@router.post("/api/session", summary="Sign in with an API token")
async def sign_in(request: Request, response: Response, given: Token) -> SignedIn:
    state: ServiceState = request.app.state.service
    client = caller_of(request).address
    seconds = state.failed_sign_ins.wait(client)
    if seconds:
        refusal = too_many_failures(seconds)
        raise HTTPException(refusal.status, refusal.text, {"retry-after": str(seconds)})
    grant = state.credentials.by_token(given.token.strip())
    if grant is None:
        state.failed_sign_ins.take(client)
        raise HTTPException(401, "The API token is wrong; see: zv-anpr server token")
    response.set_cookie(
        state.sessions.cookie, state.sessions.new_cookie(grant), max_age=LIFETIME_SECONDS,
        httponly=True, samesite="strict", secure=request.url.scheme == "https",
    )  # fmt: skip
    record_event(request, f'sign-in with token "{grant.name}"')
    return SignedIn(signed_in=True)


@router.delete("/api/session", summary="Sign out")
async def sign_out(request: Request, response: Response) -> SignedIn:
    state: ServiceState = request.app.state.service
    ended = await asyncio.to_thread(state.sessions.end, _cookie(request))
    if ended is not None:
        record_event(request, f'sign-out of token "{ended.name}"')
    response.delete_cookie(state.sessions.cookie, httponly=True, samesite="strict")
    return SignedIn(signed_in=False)


def _cookie(request: Request) -> str | None:
    state: ServiceState = request.app.state.service
    return cookie_of(request.headers.get("cookie", ""), state.sessions.cookie)
