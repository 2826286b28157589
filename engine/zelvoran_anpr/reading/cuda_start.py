"""Really starts CUDA through ONNX Runtime, and finds the reason when that fails."""

import ctypes
import sys
from importlib.util import find_spec
from pathlib import Path

from .quiet_runtime import onnxruntime

_PROVIDER = "CUDAExecutionProvider"
_PROBE = Path(__file__).with_name("cuda_probe.onnx")
"""Adds a number to itself; made by training/cuda_probe.py."""


def cuda_start_problem() -> str | None:
    """Return None when a session on the GPU runs, else one line that says why not."""
    if _PROVIDER not in onnxruntime.get_available_providers():
        return f"the installed ONNX Runtime ({onnxruntime.__version__}) offers no {_PROVIDER}"
    preload_cuda_libraries()
    try:
        return _run_probe()
    except Exception as error:  # noqa: BLE001  ONNX Runtime's errors share no narrower type
        return _one_line(error)


def preload_cuda_libraries() -> None:
    """Load the CUDA and cuDNN libraries that pip installed, so that the provider finds them."""
    preload = getattr(onnxruntime, "preload_dlls", None)
    # Without NVIDIA's wheels it would only print failures; the system's loader does the rest.
    if preload and find_spec("nvidia"):
        preload()


def _run_probe() -> str | None:
    import numpy as np

    options = onnxruntime.SessionOptions()
    options.log_severity_level = 4
    session = onnxruntime.InferenceSession(
        str(_PROBE), options, providers=[_PROVIDER], enable_fallback=0
    )
    if _PROVIDER not in session.get_providers():
        return _library_problem() or "the CUDA provider did not start"
    answer = session.run(None, {"x": np.ones(1, np.float32)})[0]
    return None if answer[0] == 2 else "the GPU gave a wrong result"


def _library_problem() -> str | None:
    """Return the loader's own words on the CUDA provider library, which names what is missing."""
    folder = Path(onnxruntime.__file__).parent / "capi"
    pattern = "{}.dll" if sys.platform == "win32" else "lib{}.so"
    try:
        shared = folder / pattern.format("onnxruntime_providers_shared")
        ctypes.CDLL(str(shared), mode=ctypes.RTLD_GLOBAL)
        ctypes.CDLL(str(folder / pattern.format("onnxruntime_providers_cuda")))
    except OSError as error:
        return _one_line(error)
    return None


def _one_line(error: Exception) -> str:
    return " ".join(str(error).split())[:300] or type(error).__name__
