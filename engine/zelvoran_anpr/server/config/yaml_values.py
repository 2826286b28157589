"""Values as YAML holds them, as Python holds them, and when two of them are the same."""

import datetime
from collections.abc import Mapping
from typing import Any

from ruamel.yaml.scalarbool import ScalarBoolean


def plain(value: Any) -> Any:
    """Return the same value built of Python's own types; what has none stays as it is."""
    if isinstance(value, Mapping):
        return {plain(key): plain(item) for key, item in value.items()}
    if isinstance(value, list):
        return [plain(item) for item in value]
    if isinstance(value, ScalarBoolean):
        return bool(value)
    for kind in (bool, int, float, str):
        if isinstance(value, kind):
            return kind(value)
    if isinstance(value, datetime.datetime):
        return datetime.datetime.combine(value.date(), value.timetz())
    return value


def same(one: Any, other: Any) -> bool:
    """Tell whether two values are equal and of one type: 1 is not true, 1.0 is not 1."""
    if one is None and other == {}:  # an empty section
        return True
    if isinstance(one, Mapping) and isinstance(other, Mapping):
        return one.keys() == other.keys() and all(same(one[key], other[key]) for key in one)
    if isinstance(one, list) and isinstance(other, list):
        return len(one) == len(other) and all(map(same, one, other))
    return type(one) is type(other) and one == other
