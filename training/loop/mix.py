"""Mixes what a training has learnt with the weights that it began with.

    python -m training.loop.mix --run runs/reader --weights training/weights/reader.pt \\
        --share 0.6 --out runs/mixed

A training on more of some groups gains there and forgets a little elsewhere; on the line between
both ends lie networks that do neither (Wortsman et al. 2022, robust fine-tuning).
"""

import argparse
from pathlib import Path

import torch


def mix(run: Path, weights: Path, share: float, out: Path) -> None:
    """Write the run's checkpoint with `share` of its own averaged weights and the rest of others.

    Raises ValueError when both are not of one network.
    """
    state = torch.load(run / "checkpoint.pt", map_location="cpu", weights_only=False)
    other = torch.load(weights, map_location="cpu", weights_only=False)
    mine, theirs = (s["parts"]["average"]["network"] for s in (state, other))
    if {n: v.shape for n, v in mine.items()} != {n: v.shape for n, v in theirs.items()}:
        raise ValueError(f"{run} and {weights} are not of one network")
    for name, value in mine.items():
        if value.is_floating_point():
            mine[name] = share * value + (1 - share) * theirs[name]
    out.mkdir(parents=True, exist_ok=True)
    torch.save(state, out / "checkpoint.pt")


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--run", type=Path, required=True)
    parser.add_argument("--weights", type=Path, required=True)
    parser.add_argument("--share", type=float, default=0.6)
    parser.add_argument("--out", type=Path, required=True)
    args = parser.parse_args()
    mix(args.run, args.weights, args.share, args.out)


if __name__ == "__main__":
    main()
