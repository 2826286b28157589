"""The detector and the reader, built once and used by all worker threads."""

import threading
from typing import Any

from ..config.settings import Settings


class NotReady(Exception):
    """The models are still loading."""


class ImageRefused(ValueError):
    """The upload is no photo that is read here; the text is one line, `status` the answer's."""

    def __init__(self, text: str, status: int = 422) -> None:
        super().__init__(text)
        self.status = status


class Engine:
    """Reads plates; thread-safe once loaded."""

    def __init__(self, settings: Settings) -> None:
        self._settings = settings.server
        self._max_pixels = int(settings.limits.megapixels * 1e6)
        self._parts: tuple[Any, Any] | None = None
        self._ready = threading.Event()

    @property
    def ready(self) -> bool:
        return self._ready.is_set()

    def load(self, region: str) -> None:
        """Build the models and read one drawn plate, so that no user waits for the first.

        Raises ValueError or RuntimeError with one line.
        """
        from ... import reading
        from .photo import warm_up_picture
        from .region import internal_name

        options = self._settings
        detector = reading.zv_anpr_detector_v17(options.detector_model, backend=options.backend)
        ocr = reading.zv_anpr_ocr_v17(
            options.ocr_model, internal_name(region), backend=options.backend
        )
        reading.read_plates(detector, ocr, warm_up_picture())
        self._parts = (detector, ocr)
        self._ready.set()

    def check_ready(self) -> None:
        """Raise NotReady while the models load."""
        if not self.ready:
            raise NotReady("The models are still loading")

    def read(self, photo: bytes, region: str) -> tuple[Any, list[dict[str, Any]]]:
        """Return the upright picture (uint8, height x width x RGB) and its plates.

        Each plate has `ocr`, `ocr_conf` (0..1), `ltrb` (pixels) and `ltrb_conf` (0..1).
        Raises ImageRefused, NotReady.
        """
        from ... import reading
        from .photo import check_photo

        if self._parts is None:
            raise NotReady("The models are still loading")
        check_photo(photo, self._max_pixels)
        try:
            image = reading.load_image(photo)
        except reading.ReadError as error:
            raise ImageRefused(str(error)) from None
        detector, ocr = self._parts
        return image, list(reading.read_plates(detector, ocr, image, region=region)["results"])
