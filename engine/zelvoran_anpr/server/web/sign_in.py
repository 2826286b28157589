"""Exchanges the API token for a cookie that scripts of the page cannot read."""

from fastapi import APIRouter, HTTPException, Request, Response

from .access import has_session
from .answers import PROBLEMS, SignedIn, Token
from .session import COOKIE, LIFETIME_SECONDS
from .state import ServiceState

router = APIRouter(tags=["session"], responses=PROBLEMS)


@router.get("/api/session", summary="Whether this browser is signed in")
async def session(request: Request) -> SignedIn:
    state: ServiceState = request.app.state.service
    return SignedIn(signed_in=has_session(request.headers.get("cookie", ""), state.sessions))


@router.post("/api/session", summary="Sign in with the API token")
async def sign_in(request: Request, response: Response, given: Token) -> SignedIn:
    state: ServiceState = request.app.state.service
    if not state.sessions.is_token(given.token.strip()):
        raise HTTPException(401, "The API token is wrong; see: zv-anpr server token")
    response.set_cookie(
        COOKIE, state.sessions.new_cookie(), max_age=LIFETIME_SECONDS, httponly=True,
        samesite="strict", secure=request.url.scheme == "https",
    )  # fmt: skip
    return SignedIn(signed_in=True)


@router.delete("/api/session", summary="Sign out")
async def sign_out(response: Response) -> SignedIn:
    response.delete_cookie(COOKIE, httponly=True, samesite="strict")
    return SignedIn(signed_in=False)
