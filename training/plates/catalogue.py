"""All designs, and which share of the samples each has."""

from random import Random

from . import designs_america, designs_asia, designs_europe
from .design import Design

ALL = (*designs_europe.DESIGNS, *designs_america.DESIGNS, *designs_asia.DESIGNS)
SHARES = {"eup": 0.36, "na": 0.28, "sa": 0.16, "cn": 0.07, "kr": 0.06, "jp": 0.07}

_BY_GROUP = {group: [d for d in ALL if d.group == group] for group in SHARES}


def choose(rng: Random, group: str = "") -> Design:
    """Return a design of the group, or of any group by its share."""
    chosen = group or rng.choices(list(SHARES), list(SHARES.values()))[0]
    designs = _BY_GROUP[chosen]
    return rng.choices(designs, [d.weight for d in designs])[0]
