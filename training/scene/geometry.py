"""Plane geometry of the rendering: homographies between four-cornered areas, tilted cameras."""

from math import cos, radians, sin
from random import Random

import numpy as np


def corners(left: float, top: float, right: float, bottom: float) -> np.ndarray:
    """Return a box as 4 x 2 points: top left, top right, bottom right, bottom left."""
    return np.array([[left, top], [right, top], [right, bottom], [left, bottom]], np.float64)


def homography(source: np.ndarray, target: np.ndarray) -> np.ndarray:
    """Return the 3 x 3 matrix that sends four source points to four target points."""
    rows, values = [], []
    for (x, y), (u, v) in zip(source, target, strict=True):
        rows += [[x, y, 1, 0, 0, 0, -u * x, -u * y], [0, 0, 0, x, y, 1, -v * x, -v * y]]
        values += [u, v]
    return np.append(np.linalg.solve(np.array(rows), np.array(values)), 1.0).reshape(3, 3)


def project(matrix: np.ndarray, points: np.ndarray) -> np.ndarray:
    """Return N x 2 points after a homography."""
    shifted = np.column_stack([points, np.ones(len(points))]) @ matrix.T
    return shifted[:, :2] / shifted[:, 2:]


def coefficients(target: np.ndarray, source: np.ndarray) -> tuple[float, ...]:
    """Return Pillow's eight numbers for a picture whose target points show the source points."""
    return tuple(homography(target, source).ravel()[:8])


def tilted(points: np.ndarray, degrees: tuple[float, float, float], distance: float) -> np.ndarray:
    """Return points of a plane seen after turning it by yaw, pitch and roll about its centre.

    `distance` is the camera's, in spans of the points.
    """
    centre = points.mean(axis=0)
    span = float(np.ptp(points, axis=0).max())
    yaw, pitch, roll = map(radians, degrees)
    x, y = ((points - centre) / span).T
    x, y = x * cos(roll) - y * sin(roll), x * sin(roll) + y * cos(roll)
    x, z = x * cos(yaw), x * sin(yaw)
    y, z = y * cos(pitch) - z * sin(pitch), y * sin(pitch) + z * cos(pitch)
    scale = distance / (distance + z)
    return np.column_stack([x * scale, y * scale]) * span + centre


def any_tilt(rng: Random) -> tuple[float, float, float]:
    """Return yaw, pitch and roll in degrees: mostly small, up to 45."""
    if rng.random() < 0.65:
        return rng.gauss(0, 8), rng.gauss(0, 6), rng.gauss(0, 3)
    return rng.uniform(-45, 45), rng.uniform(-25, 25), rng.uniform(-15, 15)
