"""How plates hang and are photographed where the detector must still find their corners."""

from random import Random

from ..scene import geometry


def strong_tilt(rng: Random) -> tuple[float, float, float]:
    """Return yaw, pitch and roll in degrees: mostly as on cars, at times up to 60, 35 and 35."""
    draw = rng.random()
    if draw < 0.7:
        return geometry.any_tilt(rng)
    if draw < 0.85:  # a camera held askew
        return rng.gauss(0, 10), rng.gauss(0, 6), rng.uniform(-35, 35)
    return rng.uniform(-60, 60), rng.uniform(-35, 35), rng.gauss(0, 8)
