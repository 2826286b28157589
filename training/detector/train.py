"""Trains the detector on photos whose plates are exchanged for rendered ones.

python -m training.detector.train --fonts FONTS --known photos/dashcam.csv --out runs/detector
"""

import argparse
from functools import partial
from pathlib import Path
from random import Random

import torch

from ..fonts import catalogue
from ..loop import options
from ..loop.replay import replayed
from ..loop.samples import loader
from .loss import loss
from .network import Detector
from .photos import known_plates, without_plates
from .scenes import MOST, sample


def tensors(photos: list, fonts: dict, size: int, scales: tuple, rng: Random) -> tuple:
    """Return picture, boxes (MOST x 4) and corners (MOST x 8) of a sample, padded with zeros."""
    picture, boxes, corners = sample(photos, fonts, rng, size, scales)
    wanted, at = torch.zeros(MOST, 4), torch.zeros(MOST, 8)
    wanted[: len(boxes)] = torch.from_numpy(boxes).float()
    at[: len(corners)] = torch.from_numpy(corners.reshape(-1, 8)).float()
    return torch.from_numpy(picture.copy()), wanted, at


def arguments() -> argparse.ArgumentParser:
    parser = options.parser(__doc__, rate=2e-3)
    parser.add_argument("--known", type=Path, required=True, help="table of photos with plates")
    parser.add_argument("--plain", type=Path, help="folder of photos without plates")
    parser.add_argument("--size", type=int, default=384, help="pixels of a sample's sides")
    parser.add_argument("--scales", type=float, nargs=2, default=(0.3, 1.3),
                        help="how photos are scaled; 0.18 0.7 for the detector at 320")  # fmt: skip
    parser.add_argument("--width", type=float, default=1.0)
    return parser


def main() -> None:
    args = arguments().parse_args()
    torch.manual_seed(args.seed)
    trainer = options.trainer(Detector(args.width), args, width=args.width, size=args.size)
    photos = known_plates(args.known) + (without_plates(args.plain) if args.plain else [])
    make = partial(tensors, photos, catalogue(args.fonts), args.size, tuple(args.scales))
    fresh = loader(make, args.seed, trainer.progress.samples, args.batch, args.workers)
    trainer.run(replayed(fresh, args.reuse, 24 * args.batch), loss)


if __name__ == "__main__":
    main()
