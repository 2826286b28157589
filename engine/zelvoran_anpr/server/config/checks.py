"""Checks of options that are more than a number or a text; each returns what there must be."""

import ipaddress
import re
from typing import Any


def region(value: Any) -> str | None:
    from ...region_aliases import to_api_region

    try:
        to_api_region(value)
    except ValueError:
        return "a region such as univ, euplus, korea, de or us"
    return None


def log_format(value: Any) -> str | None:
    return None if value in ("text", "json") else "text or json"


def networks(value: Any) -> str | None:
    fits = isinstance(value, list) and all(map(_is_network, value))
    return None if fits else 'a list of addresses, networks such as 10.0.0.0/8, or "unix"'


def origins(value: Any) -> str | None:
    fits = isinstance(value, list) and all(map(_is_origin, value))
    return None if fits else "a list of origins such as https://cameras.example"


def _is_network(value: Any) -> bool:
    try:
        return isinstance(value, str) and bool(value == "unix" or ipaddress.ip_network(value))
    except ValueError:
        return False


def _is_origin(value: Any) -> bool:
    return isinstance(value, str) and bool(re.fullmatch(r"https?://[^/\s*@]+/?", value))
