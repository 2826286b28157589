"""The server's configuration file and API token, as the command line and other programs use them.

Light to import: the YAML library loads only when a file is read or written.
"""

from .server.config.config_file import ConfigError, load_config, save_config
from .server.config.paths import get_config_dir
from .server.config.token_file import ensure_api_token, local_api_token

__all__ = [
    "ConfigError",
    "ensure_api_token",
    "get_config_dir",
    "load_config",
    "local_api_token",
    "save_config",
]
