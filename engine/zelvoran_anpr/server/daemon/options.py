"""What a server is started with: the configuration, and over it what the user named."""

from typing import NamedTuple

from ..config.settings import Settings, load_settings
from ..config.token_file import ensure_api_token, local_api_token


class StartOptions(NamedTuple):
    """Named by the user; None leaves the choice to the configuration."""

    host: str | None = None
    port: int | None = None
    threads: int | None = None
    config_path: str | None = None


def resolve(options: StartOptions) -> Settings:
    """Return the settings to start with. Raises ConfigError with one line."""
    return load_settings(
        options.config_path,
        {"host": options.host, "port": options.port, "threads": options.threads},
    )


def require_token(host: str) -> str:
    """Return the API token; on this machine's own address one is made when there is none.

    A server that others can reach is never opened on a token that nobody has seen: raises
    RuntimeError.
    """
    from ..config.addresses import is_loopback

    if local_api_token() is None and not is_loopback(host):
        raise RuntimeError(
            f"Refusing to listen on {host} without an API token; "
            "create one first: zv-anpr server token"
        )
    return ensure_api_token()
