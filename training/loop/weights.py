"""Keeps what a training has learnt, without its state: a tenth of the checkpoint's size.

    python -m training.loop.weights --run runs/reader --out training/weights/reader.pt

A training with `--start` begins with them; its schedule starts anew.
"""

import argparse
from pathlib import Path

import torch
from torch import nn


def keep(checkpoint: Path, out: Path) -> None:
    """Write a checkpoint's averaged weights and its plan, in half precision."""
    state = torch.load(checkpoint, map_location="cpu", weights_only=False)
    network = {
        name: value.half() if value.is_floating_point() else value
        for name, value in state["parts"]["average"]["network"].items()
    }
    kept = {"plan": state["plan"], "parts": {"average": {"network": network}}}
    out.parent.mkdir(parents=True, exist_ok=True)
    torch.save(kept, out)


def begin(network: nn.Module, path: Path) -> None:
    """Give a network the averaged weights of a checkpoint, or of what `keep` wrote.

    Raises RuntimeError when they are those of a network of another shape.
    """
    state = torch.load(path, map_location="cpu", weights_only=False)
    network.load_state_dict(state["parts"]["average"]["network"])


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--run", type=Path, required=True)
    parser.add_argument("--out", type=Path, required=True)
    args = parser.parse_args()
    keep(args.run / "checkpoint.pt", args.out)
    print(f"{args.out} {args.out.stat().st_size / 1e6:.2f} MB")


if __name__ == "__main__":
    main()
