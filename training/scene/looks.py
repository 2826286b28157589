"""The areas that a reader is shown: what a detector finds, whole pictures, careless crops."""

from collections.abc import Callable
from math import cos, radians, sin
from random import Random

import numpy as np

from . import geometry

_BORDER = 0.35  # largest border of a careless crop, as a share of the plate's width or height
_CUT = 0.2  # share of careless crops that cut one side of the plate
_DEEPEST = 0.3  # of the plate's width or height that a cut takes


Look = Callable[[np.ndarray, Random], np.ndarray]  # from a plate's quad to the area shown


def any_look(is_tall: bool, rng: Random) -> Look:
    """Return a way to look at a plate; tall ones are more often whole pictures."""
    draw = rng.random()
    if draw < (0.4 if is_tall else 0.58):
        return found
    return whole if draw < 0.85 else skewed


def upright(quad: np.ndarray) -> np.ndarray:
    """Return the box around a quad."""
    (left, top), (right, bottom) = quad.min(axis=0), quad.max(axis=0)
    return geometry.corners(left, top, right, bottom)


def grown(quad: np.ndarray, borders) -> np.ndarray:
    """Return a quad with borders left, top, right, bottom, as shares of its sides."""
    left, top, right, bottom = borders
    along, down = quad[1] - quad[0], quad[3] - quad[0]
    shifts = [(-left, -top), (right, -top), (right, bottom), (-left, bottom)]
    return quad + [x * along + y * down for x, y in shifts]


def near(quad: np.ndarray, _: Random) -> np.ndarray:
    """Return the upright box around a plate, with a little border."""
    return grown(upright(quad), (0.16, 0.16, 0.16, 0.16))


def found(quad: np.ndarray, rng: Random) -> np.ndarray:
    """Shift, stretch and turn a quad as a detector does; at times take the upright box."""
    if rng.random() < 0.12:
        quad = upright(quad)
    along, down = quad[1] - quad[0], quad[3] - quad[0]
    jitter = rng.choice((0.01, 0.025, 0.05))
    moved = quad + [
        rng.gauss(0, jitter * 0.4) * along + rng.gauss(0, jitter) * down for _ in range(4)
    ]
    x, y = rng.gauss(0.02, 0.025), rng.gauss(0.035, 0.045)
    return grown(moved, (x, y, x, y))


def whole(quad: np.ndarray, rng: Random) -> np.ndarray:
    """Return an upright box with any border on each side, as a picture that is a plate has."""
    return grown(upright(quad), _borders(rng))


def skewed(quad: np.ndarray, rng: Random) -> np.ndarray:
    """Return the plate with any border, turned and sheared against the plate's own edges."""
    centre = quad.mean(axis=0)
    angle = radians(rng.uniform(-12, 12))
    turn = np.array([[cos(angle), -sin(angle)], [sin(angle), cos(angle)]])
    shear = np.array([[1, rng.gauss(0, 0.12)], [rng.gauss(0, 0.03), 1]])
    return grown((quad - centre) @ turn.T @ shear.T + centre, _borders(rng))


def _borders(rng: Random) -> list[float]:
    """Return borders left, top, right, bottom; a negative one cuts the plate."""
    most = rng.choice((0.08, 0.2, _BORDER))
    borders = [rng.uniform(0, most) for _ in range(4)]
    if rng.random() < _CUT:
        borders[rng.choice((0, 0, 1, 2, 2, 3))] = -rng.uniform(0, _DEEPEST)
    return borders
