"""The options that every training has, and the settings they make."""

import argparse
import os
from pathlib import Path

from torch import nn

from . import weights
from .trainer import Settings, Trainer


def parser(description: str, **defaults) -> argparse.ArgumentParser:
    """Return the parser with all common options; `defaults` replaces theirs by name."""
    options = argparse.ArgumentParser(description=description)
    options.add_argument("--fonts", type=Path, required=True)
    options.add_argument("--out", type=Path, required=True)
    options.add_argument("--start", type=Path, help="weights or checkpoint to begin with")
    options.add_argument("--minutes", type=float, default=9, help="this run")
    options.add_argument("--total-minutes", type=float, default=27, help="the whole schedule")
    options.add_argument("--batch", type=int, default=64)
    options.add_argument("--rate", type=float, default=1e-3)
    options.add_argument("--workers", type=int, default=os.cpu_count())
    options.add_argument("--reuse", type=int, default=1, help="how often a rendered sample is used")
    options.add_argument("--seed", type=int, default=1)
    options.set_defaults(**defaults)
    return options


def trainer(network: nn.Module, args: argparse.Namespace, **plan) -> Trainer:
    """Return the trainer of a network; `plan` is what must not change between runs beside these."""
    if args.start:
        weights.begin(network, args.start)
    plan = {**plan, "batch": args.batch, "seed": args.seed}
    settings = Settings(args.out, args.minutes, args.total_minutes, args.rate, plan)
    return Trainer(network, settings)
