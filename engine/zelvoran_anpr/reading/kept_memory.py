"""Lets the C library keep freed memory, for processes that read one photo after another."""

import ctypes
import sys

_M_TRIM_THRESHOLD, _M_MMAP_THRESHOLD = -1, -3  # numbers of glibc's malloc.h
_KEPT_BYTES = 64 << 20
_LARGEST_MMAP_THRESHOLD = 32 << 20  # the C library refuses more


def keep_freed_memory() -> None:
    """Keep what an ordinary photo took: the next one takes the same.

    Given back and fetched anew page by page it is a tenth of a photo's time. Holds for the whole
    process, so it is for programs to call, not for the library.
    """
    mallopt = getattr(ctypes.CDLL(None), "mallopt", None) if sys.platform == "linux" else None
    if mallopt:
        mallopt(_M_MMAP_THRESHOLD, _LARGEST_MMAP_THRESHOLD)
        mallopt(_M_TRIM_THRESHOLD, _KEPT_BYTES)
