"""Counts the physical cores that this process may use."""

import os


def physical_cores() -> int:
    """Return how many physical cores this process may use (Linux; elsewhere all CPUs count)."""
    try:
        cpus = os.sched_getaffinity(0)
    except AttributeError:
        return os.cpu_count() or 1
    return len({_core_of(cpu) for cpu in cpus}) or 1


def _core_of(cpu: int) -> str:
    """Return a text that is the same for the hardware threads of one core."""
    try:
        path = f"/sys/devices/system/cpu/cpu{cpu}/topology/thread_siblings_list"
        with open(path, encoding="ascii") as file:
            return file.read().strip()
    except OSError:
        return str(cpu)
