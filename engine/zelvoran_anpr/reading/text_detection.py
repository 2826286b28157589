"""Finds lines of text on a photo with a differentiable-binarisation network."""

from dataclasses import dataclass

import numpy as np
from onnxruntime import InferenceSession
from PIL import Image

from . import quads
from .connected_regions import Region, find_regions

_THRESHOLD = 0.3  # a pixel of the probability map belongs to a text kernel
_MIN_CONFIDENCE = 0.5  # mean probability of a kernel
_MIN_KERNEL_SIDE = 3.0  # pixels of the map
_MOST_ENLARGEMENT = 2.0  # beyond it a small photo gains nothing
_UNCLIP = 1.6  # area times this over perimeter is the way back from the kernel to the text


@dataclass(frozen=True)
class TextLine:
    """A line of text: its quad in photo pixels and the detector's confidence (0..1)."""

    quad: np.ndarray
    confidence: float


def find_text(session: InferenceSession, image: np.ndarray, long_side: int) -> list[TextLine]:
    """Return the text lines of an RGB photo seen at a long side of so many pixels."""
    scaled, factors = _scaled(image, long_side)
    tensor = (scaled[..., ::-1].astype(np.float32) / 127.5 - 1).transpose(2, 0, 1)[None]
    probability = session.run(None, {session.get_inputs()[0].name: tensor})[0][0, 0]
    lines = (_line(region, probability) for region in find_regions(probability > _THRESHOLD))
    return [TextLine(line.quad * factors, line.confidence) for line in lines if line]


def _scaled(image: np.ndarray, long_side: int) -> tuple[np.ndarray, np.ndarray]:
    """Resize to sides that are multiples of 32; also return the factors (x, y) back."""
    height, width = image.shape[:2]
    ratio = min(long_side / max(height, width), _MOST_ENLARGEMENT)
    new_width, new_height = (max(32, round(side * ratio / 32) * 32) for side in (width, height))
    filtering = Image.Resampling.BILINEAR
    resized = Image.fromarray(image).resize((new_width, new_height), filtering)
    return np.asarray(resized), np.array([width / new_width, height / new_height])


def _line(region: Region, probability: np.ndarray) -> TextLine | None:
    rect = quads.min_area_rect(region.outline())
    width, height = quads.size(rect)
    if min(width, height) < _MIN_KERNEL_SIDE:
        return None
    confidence = region.mean(probability)
    if confidence < _MIN_CONFIDENCE:
        return None
    distance = width * height * _UNCLIP / (2 * (width + height))
    return TextLine(quads.grow(rect, distance, distance, distance, distance), confidence)
