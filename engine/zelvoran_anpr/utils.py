"""Checks of the inference runtime that the package's other modules and the front end share."""


def cuda_runtime_problem() -> str | None:
    """Return None when a CUDA session really starts, else one line that says why not.

    Never raises: every failure, of the import too, becomes the text.
    """
    try:
        from .reading.runtime_session import cuda_start_problem

        return cuda_start_problem()
    except Exception as error:  # noqa: BLE001  the contract is to answer, never to raise
        return f"{type(error).__name__}: {' '.join(str(error).split())}"
