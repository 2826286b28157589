"""The API token: one line of text in a file that only its owner may read."""

import os
from contextlib import AbstractContextManager
from pathlib import Path

from ...atomic_file import write_atomic
from .paths import get_config_dir, make_private_dir

_NAME = "api_token"
_BYTES = 32


def local_api_token() -> str | None:
    """Return the API token of this user, or None when there is none yet.

    Raises OSError, and ValueError with one line when the file holds what no request could carry.
    """
    try:
        text = token_path().read_bytes().decode("ascii", "replace").strip()
    except FileNotFoundError:
        return None
    if not all("!" <= character <= "~" for character in text):
        advice = "make a new one with: zv-anpr server token --rotate"
        raise ValueError(f"{token_path()} holds no token; {advice}")
    return text or None


def ensure_api_token(rotate: bool = False) -> str:
    """Return the API token, creating it when there is none; `rotate` replaces it by a new one.

    The file is made readable by its owner only, whatever its mode was. Raises OSError, and
    ValueError when the file holds something else.
    """
    if rotate:
        return _create()
    known = local_api_token()
    if known is None:
        with _first_user():
            return local_api_token() or _create()
    if os.name == "posix" and token_path().stat().st_mode & 0o077:
        token_path().chmod(0o600)
    return known


def _create() -> str:
    import secrets

    make_private_dir(get_config_dir())
    token = secrets.token_urlsafe(_BYTES)
    write_atomic(token_path(), f"{token}\n".encode(), 0o600)
    return token


def _first_user() -> AbstractContextManager:
    from filelock import FileLock

    directory = make_private_dir(get_config_dir())
    return FileLock(directory / f"{_NAME}.lock", mode=0o600)


def token_path() -> Path:
    """Return where the token of this machine lies."""
    return get_config_dir() / _NAME
