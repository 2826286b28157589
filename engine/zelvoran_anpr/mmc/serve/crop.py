"""From a photo and a plate's box to the picture of the vehicle that a recogniser looks at."""

import io
import math
from collections.abc import Sequence

import numpy as np
from PIL import Image

# In plate widths around the plate's centre; a car is some 3.5 European plates wide, and plates
# sit low on it. A margin keeps the roof of vans and American plates' wider surroundings.
_ASIDE, _ABOVE, _BELOW = 3.2, 3.6, 1.4
# Below this many pixels a side, the crop says nothing about a vehicle: take more of the photo.
_LEAST = 160


def vehicle_crop(image_rgb: np.ndarray, ltrb: Sequence[float]) -> np.ndarray:
    """The part of an HxWx3 uint8 photo around the plate `ltrb` (pixels) that shows the vehicle.

    Clipped to the photo; the whole photo where the box makes no sense. A view, not a copy.
    """
    height, width = image_rgb.shape[:2]
    try:
        left, top, right, bottom = (float(v) for v in ltrb)
    except (TypeError, ValueError):
        return image_rgb
    plate = right - left
    if not all(map(math.isfinite, (left, top, right, bottom))) or plate <= 0 or bottom <= top:
        return image_rgb
    across, down = (left + right) / 2, (top + bottom) / 2
    aside = max(_ASIDE * plate, _LEAST / 2)
    x0, x1 = _clip(across - aside, across + aside, width)
    y0, y1 = _clip(
        down - max(_ABOVE * plate, _LEAST), down + max(_BELOW * plate, _LEAST / 2), height
    )
    return image_rgb[y0:y1, x0:x1] if x1 > x0 and y1 > y0 else image_rgb


def _clip(low: float, high: float, size: int) -> tuple[int, int]:
    return max(0, math.floor(low)), min(size, math.ceil(high))


def jpeg_of(image_rgb: np.ndarray, longest: int, quality: int = 90) -> bytes:
    """JPEG with no side above `longest` pixels; raises ValueError for an array that is no photo."""
    if image_rgb.ndim != 3 or image_rgb.shape[2] != 3 or 0 in image_rgb.shape:
        raise ValueError(f"not an RGB photo: shape {image_rgb.shape}")
    picture = Image.fromarray(np.ascontiguousarray(image_rgb, dtype=np.uint8))
    picture.thumbnail((longest, longest), Image.Resampling.LANCZOS, reducing_gap=2.0)
    out = io.BytesIO()
    picture.save(out, "JPEG", quality=quality)
    return out.getvalue()
