"""What a reading process imposes on itself."""

import ctypes
import os
import signal
import sys

_PR_SET_PDEATHSIG = 1
_M_TRIM_THRESHOLD, _M_MMAP_THRESHOLD = -1, -3
_KEPT_BYTES = 64 << 20
_LARGEST_MMAP_THRESHOLD = 32 << 20  # the C library refuses more


def end_with_server(server: int) -> None:
    """Be killed when the server is gone, whatever this process is doing then."""
    if sys.platform != "linux":
        return  # elsewhere the end of the pipe ends it, between two photos
    ctypes.CDLL(None).prctl(_PR_SET_PDEATHSIG, signal.SIGKILL)
    if os.getppid() != server:
        os._exit(1)


def ignore_signals() -> None:
    """Leave it to the server when this process ends: photos under way are still answered."""
    for name in ("SIGINT", "SIGTERM", "SIGHUP"):
        if hasattr(signal, name):
            signal.signal(getattr(signal, name), signal.SIG_IGN)


def keep_freed_memory() -> None:
    """Let the C library keep what an ordinary photo took: the next one takes the same.

    Given back and fetched anew page by page it is a tenth of a photo's time.
    """
    mallopt = getattr(ctypes.CDLL(None), "mallopt", None) if sys.platform == "linux" else None
    if mallopt:
        mallopt(_M_MMAP_THRESHOLD, _LARGEST_MMAP_THRESHOLD)
        mallopt(_M_TRIM_THRESHOLD, _KEPT_BYTES)


def limit_memory(more: int) -> None:
    """Allow this process so many bytes more than it has now; asking for others fails then."""
    if sys.platform != "linux":
        return
    import resource

    with open("/proc/self/status", encoding="ascii") as status:
        now = next(int(line.split()[1]) * 1024 for line in status if line.startswith("VmData:"))
    _, hard = resource.getrlimit(resource.RLIMIT_DATA)
    limit = now + more if hard == resource.RLIM_INFINITY else min(now + more, hard)
    resource.setrlimit(resource.RLIMIT_DATA, (limit, hard))
