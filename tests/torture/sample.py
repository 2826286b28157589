"""A few of the faults that there are; scripts/torture.sh runs all."""

from faults import Fault, Torturer
from oracle import WRONG

FAULTS = 9  # for each command and kind


def bears(torturer: Torturer, faults: list[Fault]) -> None:
    """Each of the faults leads to the right result or to an error."""
    for fault in faults:
        verdicts, run = torturer.verdicts(fault)
        assert not set(verdicts) & set(WRONG), (fault, verdicts, run.status, run.text, run.running)


def bears_some(torturer: Torturer, kind: str) -> None:
    """The same for a sample, evenly spread, that begins at another place for each command."""
    faults = torturer.faults(kind, 24)
    assert faults
    step = max(1, len(faults) // FAULTS)
    bears(torturer, faults[len(torturer.stage.name) % step :: step][:FAULTS])
