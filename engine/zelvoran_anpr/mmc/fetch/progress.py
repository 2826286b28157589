"""One self-overwriting progress line on standard error, only where a person watches."""

import os
import sys
from typing import TYPE_CHECKING, TextIO

if TYPE_CHECKING:
    from tqdm import tqdm


def watched(stream: TextIO) -> bool:
    """Whether `stream` is a terminal whose user did not ask for plain output."""
    env = os.environ
    plain = "NO_COLOR" in env or "CI" in env or env.get("TERM") == "dumb"
    return stream.isatty() and not plain


def progress(label: str, done: int, total: int) -> "tqdm":
    """A bar over `total` bytes, `done` of them there before it began; gone when it is closed."""
    from tqdm import tqdm

    return tqdm(
        desc=f"   {label}", initial=done, total=total, unit="B", unit_scale=True,
        unit_divisor=1024, leave=False, dynamic_ncols=True, disable=not watched(sys.stderr),
    )  # fmt: skip


def hint(text: str) -> None:
    """One line of advice on standard error."""
    print(f"   {text}", file=sys.stderr, flush=True)
