"""The models of one process, and what it makes of a photo."""

import ctypes
import sys
import time
from collections.abc import Callable
from typing import Any

import numpy as np
from PIL import Image, ImageDraw, ImageFont

from ... import reading
from ...reading.errors import PhotoTooLarge
from .errors import PhotoRefused
from .photo import check_bytes

FREE_PIXELS = 4_000_000
"""Photos up to this size are unpacked without asking for memory."""

_LARGE_PIXELS = 8_000_000
"""Photos beyond this size return what they took to the system, which costs 14 ms each."""

_BYTES_PER_PIXEL = 9  # unpacked, as the array that is read, and some for the unpacking itself
_MOST_CROPS = 64_000_000
_CROP_SIDE = 2048


class _TimedDetector:
    """A detector that tells how long it took for the photo last looked at."""

    def __init__(self, detector: reading.zv_anpr_detector_v17) -> None:
        self._detector = detector
        self.seconds = 0.0

    def detect(self, image: np.ndarray) -> list[reading.PlateBox]:
        begun = time.monotonic()
        boxes = self._detector.detect(image)
        self.seconds = time.monotonic() - begun
        return boxes


class Reader:
    """Detector and reader of plates; `ask_memory(bytes)` returns when so much may be used."""

    def __init__(self, options: dict[str, Any], ask_memory: Callable[[int], None]) -> None:
        backend = options["backend"]
        self._max_pixels = options["max_pixels"]
        self._ask_memory = ask_memory
        self._detector = _TimedDetector(
            reading.zv_anpr_detector_v17(options["detector_model"], backend=backend)
        )
        self._ocr = reading.zv_anpr_ocr_v17(options["ocr_model"], options["region"], backend)
        # No user waits for the first: it costs more than those that follow.
        reading.read_plates(self._detector, self._ocr, _warm_up_picture())

    def read(self, photo: bytes, region: str, with_crops: bool) -> tuple[dict[str, Any], bytes]:
        """Return what `WorkerProcess.read` tells of a photo, and the vehicles' pixels.

        Raises PhotoRefused.
        """
        begun = time.monotonic()
        check_bytes(photo)
        image = self._loaded(photo)
        large = image.size > 3 * _LARGE_PIXELS
        if large:
            _give_memory_back()
        unpacked = time.monotonic()
        plates = list(
            reading.read_plates(self._detector, self._ocr, image, region=region)["results"]
        )
        read = time.monotonic()
        crops = _crops(image, plates) if with_crops else []
        answer = {
            "plates": [_plain(plate) for plate in plates],
            "width": image.shape[1], "height": image.shape[0],
            "crops": [crop.shape[:2] for crop in crops],
            "seconds": {
                "unpack": unpacked - begun, "detect": self._detector.seconds,
                "read": read - unpacked - self._detector.seconds,
            },
        }  # fmt: skip
        del image
        payload = b"".join(np.ascontiguousarray(crop).tobytes() for crop in crops)
        if large:
            _give_memory_back()
        return answer, payload

    def _loaded(self, photo: bytes) -> np.ndarray:
        try:
            return reading.load_image(photo, min(FREE_PIXELS, self._max_pixels))
        except PhotoTooLarge as error:
            pixels = error.width * error.height
            if pixels > self._max_pixels:
                raise PhotoRefused(self._too_large(error.width, error.height), 413) from None
        except reading.ReadError as error:
            raise _refused(error) from None
        self._ask_memory(_BYTES_PER_PIXEL * pixels)
        try:
            return reading.load_image(photo, self._max_pixels)
        except reading.ReadError as error:
            raise _refused(error) from None

    def _too_large(self, width: int, height: int) -> str:
        limit = f"{self._max_pixels / 1e6:g}"
        return f"The image may have at most {limit} megapixels, and this one has {width} x {height}"


def _refused(error: reading.ReadError) -> PhotoRefused:
    text = str(error)
    if text.startswith("Not a JPEG"):
        return PhotoRefused("The file is no JPEG, PNG, BMP or TIFF image")
    return PhotoRefused(text, 413 if text.startswith("Not enough memory") else 422)


def _plain(plate: dict[str, Any]) -> dict[str, Any]:
    return {
        "ocr": plate["ocr"], "ocr_conf": float(plate["ocr_conf"]),
        "ltrb": [float(side) for side in plate["ltrb"]], "ltrb_conf": float(plate["ltrb_conf"]),
    }  # fmt: skip


def _crops(image: np.ndarray, plates: list[dict[str, Any]]) -> list[np.ndarray]:
    from ...mmc import vehicle_crop

    crops = [vehicle_crop(image, plate["ltrb"]) for plate in plates]
    if sum(crop.nbytes for crop in crops) <= _MOST_CROPS:
        return crops
    return [_smaller(crop) for crop in crops]  # what is asked about them needs less


def _smaller(crop: np.ndarray) -> np.ndarray:
    step = -(-max(crop.shape[:2]) // _CROP_SIDE)
    return np.asarray(Image.fromarray(crop).reduce(step)) if step > 1 else crop


def _give_memory_back() -> None:
    """Return what a large photo took to the system: the C library keeps it for the next one."""
    if sys.platform == "linux":
        trim = getattr(ctypes.CDLL(None), "malloc_trim", None)
        if trim:
            trim(0)


def _warm_up_picture() -> np.ndarray:
    """Return a drawn plate (uint8, height x width x RGB), so that detector and reader both run."""
    image = Image.new("RGB", (640, 480), (70, 75, 80))
    draw = ImageDraw.Draw(image)
    draw.rectangle((210, 210, 430, 260), fill="white", outline="black", width=3)
    draw.text((228, 212), "ABC 1234", fill="black", font=ImageFont.load_default(size=40))
    return np.asarray(image)
