"""Options as fields of frozen dataclasses: default, check and one-line note stand together."""

import math
from collections.abc import Callable, Iterator, Mapping
from dataclasses import field, fields
from typing import Any, TypeVar

Check = Callable[[Any], str | None]
"""Takes a value; returns what it must be when the value is wrong, else None."""

Section = TypeVar("Section")


class OptionError(ValueError):
    """A value is wrong; the text is one line that names its key and what may stand there."""


def option(default: Any, check: Check, note: str = "") -> Any:
    """Return a field of a dataclass whose fields are all made by this function."""
    metadata = {"check": check, "note": note}
    if isinstance(default, list):
        return field(default_factory=default.copy, metadata=metadata)
    return field(default=default, metadata=metadata)


def read(kind: type[Section], values: Any, name: str) -> Section:
    """Return the section with its defaults filled in; null means the default, too.

    Raises OptionError for the first wrong value. Keys that no option has are passed over.
    """
    for problem in problems(kind, values, name):
        raise OptionError(problem)
    known = {item.name for item in fields(kind)}
    return kind(**{k: v for k, v in (values or {}).items() if k in known and v is not None})


def problems(kind: type, values: Any, name: str) -> Iterator[str]:
    """Yield a line for every wrong value."""
    if not isinstance(values or {}, Mapping):
        yield f"{name} must be a group of settings"
        return
    for item in fields(kind):
        value = (values or {}).get(item.name)
        expected = None if value is None else item.metadata["check"](value)
        if expected:
            yield f"{name}.{item.name} must be {expected}, not {value!r}"


def whole(low: int, high: int | None = None) -> Check:
    def check(value: Any) -> str | None:
        fits = isinstance(value, int) and not isinstance(value, bool)
        fits = fits and low <= value and (high is None or value <= high)
        return None if fits else f"a whole number {_range(low, high)}"

    return check


def number(low: float, high: float | None = None) -> Check:
    def check(value: Any) -> str | None:
        fits = isinstance(value, (int, float)) and not isinstance(value, bool)
        fits = fits and math.isfinite(value) and low <= value and (high is None or value <= high)
        return None if fits else f"a number {_range(low, high)}"

    return check


def _range(low: float, high: float | None) -> str:
    return f"of at least {low}" if high is None else f"from {low} to {high}"


def flag(value: Any) -> str | None:
    return None if isinstance(value, bool) else "true or false"


def text(value: Any) -> str | None:
    return None if isinstance(value, str) and value.strip() else "text"


def text_or_nothing(value: Any) -> str | None:
    return None if isinstance(value, str) else "text"


def texts(value: Any) -> str | None:
    fits = isinstance(value, list) and all(isinstance(item, str) for item in value)
    return None if fits else "a list of texts"
