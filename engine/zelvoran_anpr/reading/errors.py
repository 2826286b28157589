"""The errors of reading; each carries one line of text that says what to do next."""


class ReadError(ValueError):
    """A photo that cannot be opened or decoded."""


class PhotoTooLarge(ReadError):
    """A photo with more pixels than are allowed; `width` and `height` are its own."""

    def __init__(self, text: str, width: int = 0, height: int = 0) -> None:
        super().__init__(text)
        self.width = width
        self.height = height


class ModelError(ValueError):
    """A model name that is unknown, or a model that this version does not have."""


class BackendError(ValueError):
    """An inference backend that is unknown or that this environment cannot use."""
