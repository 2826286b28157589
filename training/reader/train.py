"""Trains the reader on rendered plates.

python -m training.reader.train --fonts FONTS --out runs/reader --minutes 9 --total-minutes 27
"""

import argparse
from functools import partial
from pathlib import Path
from random import Random

import torch
from torch.nn import functional

from ..alphabet import GAP, GROUPS, encode
from ..fonts import catalogue
from ..loop import options
from ..loop.replay import replayed
from ..loop.samples import loader
from ..scene.crop import sample
from ..shards import stored_batches
from .network import CELLS, Reader
from .shift import varied


def tensors(fonts: dict, rng: Random) -> tuple[torch.Tensor, torch.Tensor, torch.Tensor]:
    """Return picture, classes of the text and region of a new sample (-1 where no plate is)."""
    picture, text, group = sample(fonts, rng)
    region = GROUPS.index(group) if group else -1
    return torch.from_numpy(picture.copy()), torch.tensor(encode(text)), torch.tensor(region)


def loss(network: torch.nn.Module, batch: tuple) -> dict[str, torch.Tensor]:
    pictures, classes, regions = batch
    characters, region = network(varied(pictures))
    chances = characters.float().log_softmax(2)
    lengths = (classes != GAP).sum(1)
    steps = torch.full_like(lengths, CELLS)
    read = functional.ctc_loss(chances.transpose(0, 1), classes, steps, lengths, blank=GAP)
    known = functional.cross_entropy(region.float(), regions, ignore_index=-1)
    exact = _exact(chances.argmax(2), classes)
    return {"loss": read + 0.05 * known, "read": read, "region": known, "exact": exact}


def _exact(best: torch.Tensor, classes: torch.Tensor) -> torch.Tensor:
    """Return the share of texts read right; `best` is N x CELLS, `classes` N x LONGEST."""
    fresh = torch.ones_like(best, dtype=torch.bool)
    fresh[:, 1:] = best[:, 1:] != best[:, :-1]
    kept = fresh & (best != GAP)
    order = (~kept).long().sort(dim=1, stable=True).indices
    texts = (best * kept).gather(1, order)
    longest = classes.shape[1]
    return (
        ((texts[:, :longest] == classes).all(1) & (texts[:, longest:] == GAP).all(1)).float().mean()
    )


def arguments() -> argparse.ArgumentParser:
    parser = options.parser(__doc__, batch=256)
    parser.add_argument("--shards", type=Path, help="pre-rendered samples; none: render now")
    parser.add_argument("--size", type=int, default=128)
    return parser


def main() -> None:
    args = arguments().parse_args()
    torch.manual_seed(args.seed)
    trainer = options.trainer(Reader(args.size), args, size=args.size)
    first = trainer.progress.samples
    if args.shards:
        fresh = stored_batches(args.shards, args.batch, args.seed, first)
    else:
        make = partial(tensors, catalogue(args.fonts))
        fresh = loader(make, args.seed, first, args.batch, args.workers)
    trainer.run(replayed(fresh, args.reuse, 48 * args.batch), loss)


if __name__ == "__main__":
    main()
