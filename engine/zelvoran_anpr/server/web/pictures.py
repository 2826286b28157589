"""Turns the pixels that a reading process sends back into arrays."""

from collections.abc import Sequence
from typing import Any


def pictures(sizes: Sequence[Sequence[int]], pixels: bytes) -> list[Any]:
    """Return height x width x RGB arrays; `sizes` holds each one's height and width."""
    if not sizes:
        return []
    import numpy as np

    found, at = [], 0
    for height, width in sizes:
        length = height * width * 3
        flat = np.frombuffer(pixels, np.uint8, length, at)
        found.append(flat.reshape(height, width, 3))
        at += length
    return found
