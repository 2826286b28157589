"""Further API tokens with names and scopes, each of which can be taken back by itself.

`api_tokens.json` stands beside `api_token`, which goes on as it was: the token of this machine,
known as "default". Of the named ones only a hash is kept.
"""

import datetime
import hashlib
import json
import re
import secrets
from contextlib import AbstractContextManager
from pathlib import Path
from typing import NamedTuple

from .paths import get_config_dir, make_private_dir

DEFAULT = "default"
READ, MANAGE = "read", "manage"
SCOPES = (READ, MANAGE)
_NAME = "api_tokens.json"
_VERSION = 1
_NAMES = re.compile(r"[A-Za-z0-9][A-Za-z0-9_-]{0,63}")


class TokenProblem(ValueError):
    """What was asked for cannot be done; the text is one line."""


class NamedToken(NamedTuple):
    name: str
    scopes: tuple[str, ...]
    sha256: str
    created: str


def tokens_path() -> Path:
    return get_config_dir() / _NAME


def hash_of(token: str) -> str:
    """Tokens are random and long: no slow hash is needed to keep them from being guessed."""
    return hashlib.sha256(token.encode("utf-8", "replace")).hexdigest()


def named_tokens() -> list[NamedToken]:
    """Return the named tokens. Raises TokenProblem when the file cannot be understood, OSError."""
    try:
        return _parsed(json.loads(tokens_path().read_bytes()))
    except FileNotFoundError:
        return []
    except (ValueError, KeyError, TypeError):
        raise TokenProblem(f"{tokens_path()} cannot be understood; mend or remove it") from None


def add_token(name: str, scopes: tuple[str, ...]) -> str:
    """Make a token and return it; nobody can show it again. Raises TokenProblem, OSError."""
    if not _NAMES.fullmatch(name) or name == DEFAULT:
        raise TokenProblem(f'"{name}" is no name for a token: use letters, digits, - and _')
    with _one_writer():
        known = named_tokens()
        if any(token.name == name for token in known):
            raise TokenProblem(f'There is a token "{name}" already; revoke it first')
        value = secrets.token_urlsafe(32)
        made = datetime.datetime.now(datetime.timezone.utc).isoformat(timespec="seconds")
        _write([*known, NamedToken(name, scopes, hash_of(value), made)])
    return value


def revoke_token(name: str) -> None:
    """Take a token back; running servers refuse it from now on. Raises TokenProblem, OSError."""
    with _one_writer():
        known = named_tokens()
        left = [token for token in known if token.name != name]
        if len(left) == len(known):
            raise TokenProblem(f'There is no token "{name}"')
        _write(left)


def _parsed(content: dict) -> list[NamedToken]:
    if content["version"] != _VERSION:
        raise ValueError
    tokens = [NamedToken(**{**entry, "scopes": tuple(entry["scopes"])})
              for entry in content["tokens"]]  # fmt: skip
    if not all(set(token.scopes) <= set(SCOPES) for token in tokens):
        raise ValueError
    return tokens


def _write(tokens: list[NamedToken]) -> None:
    from ...atomic_file import write_atomic

    entries = [{**token._asdict(), "scopes": list(token.scopes)} for token in tokens]
    text = json.dumps({"version": _VERSION, "tokens": entries}, indent=1)
    write_atomic(tokens_path(), f"{text}\n".encode(), 0o600)


def _one_writer() -> AbstractContextManager:
    from filelock import FileLock

    directory = make_private_dir(get_config_dir())
    return FileLock(directory / f"{_NAME}.lock", mode=0o600)
