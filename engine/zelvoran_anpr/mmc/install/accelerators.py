"""Which accelerators this machine offers, asked from the drivers themselves."""

import ctypes
import os
import platform

_ARCHES = {
    "x86_64": "x64", "amd64": "x64", "x64": "x64",
    "aarch64": "arm64", "arm64": "arm64", "s390x": "s390x",
}  # fmt: skip
_SYSTEMS = {"Linux": "ubuntu", "Darwin": "macos", "Windows": "win"}


def release_platform() -> tuple[str, str]:
    """System and architecture as release file names spell them; unknown ones as they are."""
    system, machine = platform.system(), platform.machine().lower()
    return _SYSTEMS.get(system, system.lower()), _ARCHES.get(machine, machine)


def _load(*names: str) -> ctypes.CDLL | None:
    for name in names:
        try:
            return ctypes.CDLL(name)
        except OSError:
            continue
    return None


def cuda_driver_version() -> tuple[int, int] | None:
    """The newest CUDA that the NVIDIA driver supports, as (major, minor); None without a GPU."""
    driver = _load("nvcuda.dll") if os.name == "nt" else _load("libcuda.so.1")
    if driver is None or driver.cuInit(0) != 0:
        return None
    count, version = ctypes.c_int(), ctypes.c_int()
    if driver.cuDeviceGetCount(ctypes.byref(count)) != 0 or count.value < 1:
        return None
    if driver.cuDriverGetVersion(ctypes.byref(version)) != 0:
        return None
    return version.value // 1000, version.value % 1000 // 10


def vulkan_loader() -> bool:
    return _load("vulkan-1.dll" if os.name == "nt" else "libvulkan.so.1") is not None
