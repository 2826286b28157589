"""Tells from the bytes of an upload, before anything is unpacked, what cannot be a fair photo."""

from .errors import PhotoRefused

_MOST_SCANS = 200
_FILL = b"\xff" * 65536
_SCAN = b"\xff\xda"


def check_bytes(data: bytes) -> None:
    """Raise PhotoRefused for what is empty, or made so that unpacking it hardly ends."""
    if not data:
        raise PhotoRefused("The image is empty", 400)
    if not data.startswith(b"\xff\xd8"):
        return
    # A progressive JPEG has about ten passes over the picture; each of them costs all its pixels.
    # Neither sequence occurs in what a JPEG's coder writes.
    if data.count(_SCAN) > _MOST_SCANS or _FILL in data:
        raise PhotoRefused("The photo is damaged: it is made to take very long to unpack")
