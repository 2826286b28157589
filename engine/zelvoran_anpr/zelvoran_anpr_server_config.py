"""The server's configuration file and API token, as the command line and other programs use them.

Light to import: the YAML library loads only when a file is read or written.
"""

from .server.config import token_file
from .server.config.config_file import ConfigError, load_config, save_config
from .server.config.paths import get_config_dir
from .server.config.token_file import local_api_token

__all__ = [
    "ConfigError",
    "ensure_api_token",
    "get_config_dir",
    "load_config",
    "local_api_token",
    "save_config",
]


def ensure_api_token(rotate: bool = False) -> str:
    """Return the API token, creating it when there is none; `rotate` replaces it by a new one.

    Who rotates it reads the configuration next, to show where to sign in: while that cannot be
    read nothing is replaced. Raises OSError, ConfigError, and ValueError when the file of the
    token holds something else.
    """
    if rotate:
        load_config()
    return token_file.ensure_api_token(rotate)
