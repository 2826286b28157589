"""All designs, in which shares they are drawn, and the sets of them that have a name."""

from random import Random

from . import designs_america, designs_asia, designs_europe, designs_others
from .design import Design

ALL = (
    *designs_europe.DESIGNS,
    *designs_america.DESIGNS,
    *designs_asia.DESIGNS,
    *designs_others.DESIGNS,
)
SHARES = {"eup": 0.36, "na": 0.28, "sa": 0.16, "cn": 0.07, "kr": 0.06, "jp": 0.07}

_SETS = {
    **{group: [d for d in ALL if d.group == group] for group in SHARES},
    "arabic": [d for d in designs_others.DESIGNS if d.script != "thai"],
    "arabicdigits": list(designs_others.ARABIC_DIGITS),
    "thai": [d for d in designs_others.DESIGNS if d.script == "thai"],
    "tworow": [d for d in ALL if len(d.rows) > 1],
}
NAMES = tuple(_SETS)  # region groups, then sets of designs across them


def choose(rng: Random, name: str = "") -> Design:
    """Return a design of a named set, or of any group by its share."""
    designs = _SETS[name or rng.choices(list(SHARES), list(SHARES.values()))[0]]
    return rng.choices(designs, [d.weight for d in designs])[0]
