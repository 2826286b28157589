"""Opens ONNX Runtime sessions: backend to execution provider, thread limits, clear failures."""

from .cpu_cores import physical_cores
from .cuda_start import cuda_start_problem, preload_cuda_libraries
from .errors import BackendError
from .quiet_runtime import onnxruntime

PROVIDERS = {
    "cpu": "CPUExecutionProvider",
    "cuda": "CUDAExecutionProvider",
    "directml": "DmlExecutionProvider",
}


def open_session(model_path: str, backend: str) -> onnxruntime.InferenceSession:
    """Return a session for a model file; raises BackendError when the backend cannot be used."""
    provider = _offered_provider(backend)
    if backend == "cuda":
        preload_cuda_libraries()
    session, reason = _start(model_path, provider)
    if session is None or session.get_providers()[0] != provider:
        reason = (backend == "cuda" and cuda_start_problem()) or reason or "it did not start"
        raise BackendError(f'Backend "{backend}" cannot start ({reason}); {_advice(backend)}')
    return session


def check_backend(backend: str) -> None:
    """Raise BackendError when the backend is unknown or the ONNX Runtime does not offer it."""
    _offered_provider(backend)


def _offered_provider(backend: str) -> str:
    if backend not in PROVIDERS:
        raise BackendError(f'Unknown backend "{backend}": use cpu, cuda or directml')
    provider = PROVIDERS[backend]
    if provider not in onnxruntime.get_available_providers():
        raise BackendError(
            f'Backend "{backend}" is not available: the installed ONNX Runtime offers no '
            f"{provider}; {_advice(backend)}"
        )
    return provider


def _advice(backend: str) -> str:
    return f'run "zv-anpr gpu-setup {backend}" to install what it needs'


def _start(model_path: str, provider: str):
    """Return (session, None), or (None, why) when an accelerator does not start."""
    providers = [provider] if provider == PROVIDERS["cpu"] else [provider, PROVIDERS["cpu"]]
    options = _options(provider)
    try:
        return onnxruntime.InferenceSession(
            model_path, options, providers=providers, enable_fallback=0
        ), None
    except Exception as error:
        if provider == PROVIDERS["cpu"]:
            raise
        return None, " ".join(str(error).split())[:300]


def _options(provider: str) -> onnxruntime.SessionOptions:
    options = onnxruntime.SessionOptions()
    options.intra_op_num_threads = physical_cores()
    options.inter_op_num_threads = 1
    # Waiting threads sleep: a spinning pool steals the cores from the server's other workers.
    options.add_session_config_entry("session.intra_op.allow_spinning", "0")
    options.log_severity_level = 4
    # A plan of memory for every size of photo that comes along costs more than it saves.
    options.enable_mem_pattern = False
    if provider == PROVIDERS["directml"]:
        # DirectML supports neither memory patterns nor parallel execution.
        options.execution_mode = onnxruntime.ExecutionMode.ORT_SEQUENTIAL
    return options
