"""Validates a configuration file: python -m zelvoran_anpr.server.check [FILE]

The status is 0 when the file is good, else 1, with one line for each wrong value and unknown key.
"""

import argparse
import sys

from .config.config_file import ConfigError, load_config
from .config.paths import config_path
from .config.review import unknown_keys, wrong_values


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(prog="python -m zelvoran_anpr.server.check")
    parser.add_argument("file", nargs="?", help="default: the one that the server uses")
    file = parser.parse_args(arguments).file
    try:
        config = load_config(file)
    except ConfigError as error:
        print(error)
        return 1
    found = [*wrong_values(config), *unknown_keys(config)]
    name = file or config_path()
    print(*(f"{name}: {line}" for line in found or ["the configuration is good"]), sep="\n")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
