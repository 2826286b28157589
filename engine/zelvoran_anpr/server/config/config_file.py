"""Loads and saves server_config.yaml; a file that cannot be understood is never overwritten."""

import os
from collections.abc import Mapping
from pathlib import Path
from typing import Any

from ...atomic_file import write_atomic
from .options import SECTIONS, default_config, default_text
from .paths import config_path, make_private_dir


class ConfigError(ValueError):
    """The configuration cannot be used; the text is one line that names the file and the place."""


def load_config(path: str | os.PathLike | None = None) -> dict:
    """Return the configuration as nested plain dicts, lists and values.

    Without a file of the default name the result is the defaults. A file is returned as it
    stands, without defaults filled in. Raises ConfigError, also when a named file is missing.
    """
    file = Path(path) if path else config_path()
    text = _read(file)
    if text is None:
        if path:
            raise ConfigError(f"Configuration file {file} not found")
        return default_config()
    return _sections(file, _parse(file, text)[0])


def save_config(config: Mapping[str, Any], path: str | os.PathLike | None = None) -> None:
    """Write the configuration back; comments, order and untouched values of the file survive.

    Raises ConfigError when the file that stands there cannot be understood, and OSError.
    """
    from . import yaml_document

    file = Path(path) if path else config_path()
    text = _read(file)
    document, layout = _parse(file, default_text() if text is None else text)
    new = yaml_document.updated_text(document, layout, config)
    if new == text:
        return
    make_private_dir(file.parent)
    write_atomic(file, new.encode("utf-8"))


def _sections(file: Path, document: Any) -> dict:
    from . import yaml_document
    from .yaml_values import plain

    config = plain(document)
    for name in SECTIONS:
        if name in config and config[name] is None:
            config[name] = {}
        if not isinstance(config.get(name, {}), dict):
            line = yaml_document.line_of(document, name)
            raise ConfigError(f'{file}, line {line}: "{name}" must hold "key: value" lines')
    return config


def _read(file: Path) -> str | None:
    try:
        data = file.read_bytes()
    except FileNotFoundError:
        return None
    except OSError as error:
        raise ConfigError(f"{file}: {error.strerror}") from None
    try:
        return data.decode("utf-8-sig")
    except UnicodeDecodeError as error:
        line = data.count(b"\n", 0, error.start) + 1
        raise ConfigError(f"{file}, line {line}: the text is not UTF-8") from None


def _parse(file: Path, text: str) -> tuple[Any, Any]:
    from . import yaml_document

    try:
        return yaml_document.parse(text)
    except yaml_document.YamlProblem as problem:
        place = f", line {problem.line}" if problem.line else ""
        raise ConfigError(f"{file}{place}: {problem}") from None
