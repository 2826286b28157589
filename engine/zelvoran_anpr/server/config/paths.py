"""Where the server keeps its files."""

import os
from pathlib import Path

CONFIG_NAME = "server_config.yaml"


def get_config_dir() -> Path:
    """Return the per-user directory of the server; ZELVORAN_CONFIG_DIR overrides it.

    The directory need not exist yet.
    """
    chosen = os.environ.get("ZELVORAN_CONFIG_DIR")
    return Path(chosen).expanduser().absolute() if chosen else Path.home() / ".zelvoran"


def config_path() -> Path:
    """Return the configuration file that is used when none is named."""
    return get_config_dir() / CONFIG_NAME


def log_path() -> Path:
    """Return the log that all servers of this user share."""
    return get_config_dir() / "logs" / "server.log"


def run_dir() -> Path:
    """Return the directory of the records of running servers."""
    return get_config_dir() / "run"


def make_private_dir(path: Path) -> Path:
    """Create a directory that only its owner may enter; one that exists stays as it is."""
    path.mkdir(mode=0o700, parents=True, exist_ok=True)
    return path
