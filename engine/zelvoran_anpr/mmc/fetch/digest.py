"""SHA-256 of files, read in blocks so that any size fits in memory."""

import hashlib
from pathlib import Path

_BLOCK = 1 << 20


def sha256_of(path: Path) -> str:
    """Lower-case hex digest; raises OSError when the file cannot be read."""
    digest = hashlib.sha256()
    with path.open("rb") as stream:
        while block := stream.read(_BLOCK):
            digest.update(block)
    return digest.hexdigest()
