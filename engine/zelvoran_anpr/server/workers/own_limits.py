"""What a reading process imposes on itself."""

import ctypes
import os
import signal
import sys

_PR_SET_PDEATHSIG = 1


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
