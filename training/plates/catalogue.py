"""All designs, and which share of the samples each has."""

from random import Random

from . import designs_america, designs_asia, designs_europe
from .design import Design

ALL = (*designs_europe.DESIGNS, *designs_america.DESIGNS, *designs_asia.DESIGNS)
SHARES = {"eup": 0.38, "na": 0.25, "sa": 0.14, "cn": 0.08, "kr": 0.07, "jp": 0.08}

_BY_GROUP = {group: [d for d in ALL if d.group == group] for group in SHARES}


def choose(rng: Random, group: str = "") -> Design:
    """Return a design of the group, or of any group by its share."""
    chosen = group or rng.choices(list(SHARES), list(SHARES.values()))[0]
    designs = _BY_GROUP[chosen]
    return rng.choices(designs, [d.weight for d in designs])[0]
