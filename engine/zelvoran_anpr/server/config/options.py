"""The table of every option of server_config.yaml: its default, its check and its one-line note."""

from collections.abc import Callable
from typing import Any, NamedTuple

Check = Callable[[Any], str | None]
"""Takes a value; returns what it must be when the value is wrong, else None."""


class Option(NamedTuple):
    default: Any
    check: Check
    note: str


def _whole(low: int, high: int) -> Check:
    def check(value: Any) -> str | None:
        fits = isinstance(value, int) and not isinstance(value, bool) and low <= value <= high
        return None if fits else f"a whole number from {low} to {high}"

    return check


def _number(low: float, high: float) -> Check:
    def check(value: Any) -> str | None:
        number = isinstance(value, (int, float)) and not isinstance(value, bool)
        return None if number and low <= value <= high else f"a number from {low:g} to {high:g}"

    return check


def _flag(value: Any) -> str | None:
    return None if isinstance(value, bool) else "true or false"


def _text(value: Any) -> str | None:
    return None if isinstance(value, str) and value.strip() else "a text"


def _region(value: Any) -> str | None:
    from ...region_aliases import to_api_region

    try:
        to_api_region(value)
    except ValueError:
        return "a region such as univ, euplus, korea, de or us"
    return None


def _texts(value: Any) -> str | None:
    fits = isinstance(value, list) and all(isinstance(item, str) for item in value)
    return None if fits else "a list of texts"


OPTIONS: dict[str, dict[str, Option]] = {
    "server": {
        "host": Option("127.0.0.1", _text, "address to listen on; 0.0.0.0 for every network"),
        "port": Option(8000, _whole(1, 65535), "port to listen on"),
        "threads": Option(4, _whole(1, 256), "photos read at the same time"),
        "backend": Option("cpu", _text, "cpu, cuda or directml"),
        "detector_model": Option("640p_fp32", _text, "320p_fp32 or 640p_fp32"),
        "ocr_model": Option("fp32", _text, "fp32 or int8"),
        "region": Option("univ", _region, "plates to expect: univ, euplus, na, korea, de, us, ..."),
        "allowed_hosts": Option([], _texts, "further names that clients reach this server by"),
        "require_token": Option(False, _flag, "ask programs on this machine for the token too"),
    },
    "mmc": {
        "enabled": Option(True, _flag, "recognise make, model and colour on request"),
        "backend": Option("cloud", _text, "cloud or local"),
        "threads": Option(2, _whole(1, 64), "vehicles recognised at the same time"),
    },
    "limits": {
        "body_mb": Option(20, _number(0.001, 4096), "largest upload, in MB"),
        "uploads_mb": Option(200, _number(0.001, 65536), "all uploads at the same time, in MB"),
        "megapixels": Option(50, _number(0.001, 1000), "largest photo"),
        "queue": Option(32, _whole(0, 100000), "photos that may wait; more are answered with 429"),
        "header_seconds": Option(10, _number(0.1, 3600), "for a client to send its request line"),
        "body_seconds": Option(60, _number(0.1, 3600), "for a client to send its photo"),
        "request_seconds": Option(
            30, _number(0.1, 3600), "for reading one photo, waiting included"
        ),
        "mmc_seconds": Option(110, _number(0.1, 3600), "for a request with make, model and colour"),
        "connections": Option(512, _whole(8, 100000), "clients connected at the same time"),
        "start_seconds": Option(120, _number(1, 3600), "for a background server to become ready"),
        "stop_seconds": Option(20, _number(0.1, 3600), "for requests under way when stopping"),
        "log_mb": Option(10, _number(0.001, 10000), "size at which server.log is rotated"),
        "log_files": Option(5, _whole(1, 100), "rotated logs that are kept"),
    },
}


def default_config() -> dict[str, dict[str, Any]]:
    """Return a fresh configuration that holds every option with its default."""
    return {
        section: {
            key: list(option.default) if isinstance(option.default, list) else option.default
            for key, option in options.items()
        }
        for section, options in OPTIONS.items()
    }


def default_text() -> str:
    """Return the defaults as a commented YAML text: what a first save starts from."""
    lines = ["# Zelvoran ANPR server. Every line may be left out; these are the defaults."]
    for section, options in OPTIONS.items():
        lines.append(f"{section}:")
        for key, option in options.items():
            lines.append(f"  {key}: {_yaml(option.default)}".ljust(32) + f"# {option.note}")
    return "\n".join(lines) + "\n"


def _yaml(value: Any) -> str:
    return str(value).lower() if isinstance(value, bool) else str(value)
