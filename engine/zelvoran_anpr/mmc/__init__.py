"""Vehicle make, model and colour: set-up of the on-device model, and the backends that recognise.

`fetch` moves bytes, `install` puts files in place and takes them away, `serve` recognises.
Names load on first use, so that importing the package costs nothing.
"""

from importlib import import_module
from typing import TYPE_CHECKING

if TYPE_CHECKING:
    from .errors import MmcError
    from .serve.backend import MmcBackend, create_backend
    from .serve.crop import vehicle_crop

__all__ = ["MmcBackend", "MmcError", "create_backend", "vehicle_crop"]

_HOMES = {
    "MmcBackend": ".serve.backend",
    "MmcError": ".errors",
    "create_backend": ".serve.backend",
    "vehicle_crop": ".serve.crop",
}


def __getattr__(name: str) -> object:
    if name not in _HOMES:
        raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
    return getattr(import_module(_HOMES[name], __name__), name)
