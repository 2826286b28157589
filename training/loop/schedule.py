"""The learning rate over a training, and the average of its weights."""

import copy
from math import cos, pi

import torch
from torch import nn

_WARM_UP = 0.03  # share of the training


def rate(done: float) -> float:
    """Return the share of the highest rate: a short rise, then a cosine to 1 %; `done` is 0..1."""
    if done < _WARM_UP:
        return 0.02 + 0.98 * done / _WARM_UP
    fall = min(1.0, (done - _WARM_UP) / (1 - _WARM_UP))
    return 0.01 + 0.99 * (1 + cos(pi * fall)) / 2


class Average:
    """A moving average of a network's weights: what is evaluated and exported."""

    def __init__(self, network: nn.Module, keep: float = 0.999):
        self.network = copy.deepcopy(network).eval().requires_grad_(False)
        self._keep, self._updates = keep, 0

    @torch.no_grad()
    def update(self, network: nn.Module) -> None:
        self._updates += 1
        keep = min(self._keep, self._updates / (self._updates + 10))
        mine, theirs = self.network.state_dict(), network.state_dict()
        for name, value in theirs.items():
            if value.dtype.is_floating_point:
                mine[name].lerp_(value, 1 - keep)
            else:
                mine[name].copy_(value)

    def state_dict(self) -> dict:
        return {"network": self.network.state_dict(), "updates": self._updates}

    def load_state_dict(self, state: dict) -> None:
        self.network.load_state_dict(state["network"])
        self._updates = state["updates"]
