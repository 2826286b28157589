"""Loads the averaged weights of a reader's run."""

from pathlib import Path

import torch

from .network import Reader


def trained(run: Path) -> Reader:
    """Return the network of RUN/checkpoint.pt, ready to read."""
    state = torch.load(run / "checkpoint.pt", map_location="cpu", weights_only=False)
    network = Reader(state["plan"]["size"])
    network.load_state_dict(state["parts"]["average"]["network"])
    return network.eval()


def temperature(run: Path) -> float:
    """Return what the calibration wrote, 1 where it has not run."""
    file = run / "temperature.txt"
    return float(file.read_text()) if file.exists() else 1.0
