"""What can keep a photo from being read."""


class NotReady(Exception):
    """The models are still loading."""


class PhotoRefused(ValueError):
    """The upload is no photo that is read here; the text is one line, `status` the answer's."""

    def __init__(self, text: str, status: int = 422) -> None:
        super().__init__(text)
        self.status = status


class PoolFull(Exception):
    """The queue is full; `retry_after` is in how many whole seconds it may not be."""

    def __init__(self, retry_after: int) -> None:
        super().__init__("The server is busy")
        self.retry_after = retry_after


class ReadingFailed(RuntimeError):
    """No fault of the photo that we know of; the text is one line for the log."""


class WorkerLost(ReadingFailed):
    """A reading process could not start, or ended in the middle."""


class PhotoFailed(ReadingFailed):
    """Reading this photo failed by a mistake of ours; the process goes on."""
