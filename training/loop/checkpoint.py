"""Keeps a training on disk, whole or not at all, so that it can stop at any minute."""

import os
import random
from dataclasses import dataclass
from pathlib import Path

import torch


@dataclass
class Progress:
    """How far a training is."""

    steps: int = 0
    samples: int = 0  # fresh ones drawn so far: the position in the data
    seconds: float = 0.0  # of training, over all runs


def save(path: Path, progress: Progress, parts: dict, plan: dict) -> None:
    """Write the state of `parts` (objects with state_dict), the plan and all random states."""
    state = {
        "progress": vars(progress),
        "plan": plan,
        "parts": {name: part.state_dict() for name, part in parts.items()},
        "random": random.getstate(),
        "torch": torch.get_rng_state(),
        "cuda": torch.cuda.get_rng_state_all() if torch.cuda.is_available() else [],
    }
    path.parent.mkdir(parents=True, exist_ok=True)
    draft = path.with_suffix(".part")
    with open(draft, "wb") as file:
        torch.save(state, file)
        file.flush()
        os.fsync(file.fileno())
    os.replace(draft, path)


def load(path: Path, parts: dict, plan: dict) -> Progress:
    """Restore what `save` wrote; a new training where there is no file.

    Raises ValueError when the file belongs to a training with another plan.
    """
    if not path.exists():
        return Progress()
    state = torch.load(path, map_location="cpu", weights_only=False)
    if state["plan"] != plan:
        raise ValueError(
            f"{path} was begun with {state['plan']}, not with {plan}: use the same settings, or "
            "another --out"
        )
    for name, part in parts.items():
        part.load_state_dict(state["parts"][name])
    random.setstate(state["random"])
    torch.set_rng_state(state["torch"])
    if torch.cuda.is_available() and state["cuda"]:
        torch.cuda.set_rng_state_all(state["cuda"])
    return Progress(**state["progress"])
