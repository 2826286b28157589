"""Rendered samples on disk, for machines where cores are few and time is not.

    python -m training.shards --fonts FONTS --out shards --samples 300000 --max-gb 4 \\
        --mix eup=.3,na=.25,sa=.15,cn=.1,kr=.06,jp=.06,tworow=.08

A shard holds 4096 samples as JPEG; written whole or not at all, so rendering can stop and go on.
Several processes may write into one folder, each with a seed of its own.
"""

import argparse
import io
import os
from collections.abc import Iterator
from functools import partial
from multiprocessing import Pool
from pathlib import Path
from random import Random

import numpy as np
from PIL import Image

from .alphabet import GROUPS, encode
from .fonts import catalogue
from .plates.catalogue import NAMES
from .scene.crop import any_face, shown
from .scene.scenery import photos

Sample = tuple[bytes, list[int], int]  # JPEG, classes, region index or -1

SHARD = 4096  # samples
SHOTS = 4  # of a drawn plate, each with its own surroundings, light and look
_MIXED = 8  # shards whose samples are shuffled together
_QUALITY = 93


def render(
    plate: int,
    fonts: dict,
    seed: int,
    mix: dict[str, float] | None = None,
    scenery: tuple[str, ...] = (),
) -> list[Sample]:
    """Return SHOTS samples of plate `plate` as (JPEG, classes, region index or -1).

    `mix` gives weights to region groups and sets of designs; without it their usual shares hold.
    `scenery` are photos that show no plate; they stand around some.
    """
    rng = Random(f"{seed}:{plate}")
    name = rng.choices(list(mix), list(mix.values()))[0] if mix else ""
    face = any_face(fonts, rng, name)
    return [_packed(*shown(face, fonts, rng, scenery)) for _ in range(SHOTS)]


def _packed(picture: np.ndarray, text: str, group: str) -> Sample:
    file = io.BytesIO()
    Image.fromarray(picture).save(file, "JPEG", quality=_QUALITY, subsampling=0)
    return file.getvalue(), encode(text), GROUPS.index(group) if group else -1


def mixture(text: str) -> dict[str, float]:
    """Return the weights of "na=2,kr=0.5"; ValueError for a name that is none, or no weights."""
    pairs = [part.partition("=") for part in text.split(",")]
    mix = {name: float(weight or 1) for name, _, weight in pairs}
    if not mix.keys() <= set(NAMES) or not sum(mix.values()) > 0 or min(mix.values()) < 0:
        raise ValueError(f"{text!r}: wanted NAME=WEIGHT,... of {' '.join(NAMES)}")
    return mix


def write(path: Path, samples: list[Sample]) -> None:
    """Write one shard."""
    pictures, classes, regions = zip(*samples, strict=True)
    draft = path.with_suffix(".part.npz")
    np.savez(
        draft,
        pictures=np.frombuffer(b"".join(pictures), np.uint8),
        ends=np.cumsum([len(p) for p in pictures]),
        classes=np.array(classes, np.int64),
        regions=np.array(regions, np.int64),
    )
    os.replace(draft, path)


def read(path: Path) -> list[tuple[bytes, np.ndarray, int]]:
    """Return (JPEG, classes, region) of a shard's samples."""
    with np.load(path) as shard:
        data, ends = shard["pictures"].tobytes(), shard["ends"]
        classes, regions = shard["classes"], shard["regions"]
    starts = np.concatenate([[0], ends[:-1]])
    pictures = [data[start:end] for start, end in zip(starts, ends, strict=True)]
    return list(zip(pictures, classes, map(int, regions), strict=True))


def unpacked(picture: bytes) -> np.ndarray:
    """Return a stored picture, uint8 H x W x 3."""
    return np.asarray(Image.open(io.BytesIO(picture)))


def stored_batches(folder: Path, batch: int, seed: int, first: int) -> Iterator[tuple]:
    """Yield tensors of the reader's training from shards, in a new order each round, endlessly.

    `first` samples are passed over. Several shards are mixed, since one may hold a single group.
    Raises FileNotFoundError where no shard is.
    """
    import torch

    files = sorted(folder.glob("shard-*.npz"))
    if not files:
        raise FileNotFoundError(f"{folder} holds no shards: run python -m training.shards")
    position = first // SHARD
    while True:
        turn, place = divmod(position, len(files))
        order = Random(f"{seed}:{turn}").sample(files, len(files))[place : place + _MIXED]
        samples = [sample for file in order for sample in read(file)]
        Random(position).shuffle(samples)
        for start in range(0, len(samples) - batch + 1, batch):
            pictures, classes, regions = zip(*samples[start : start + batch], strict=True)
            yield (
                torch.from_numpy(np.stack([unpacked(picture) for picture in pictures])),
                torch.from_numpy(np.stack(classes)),
                torch.tensor(regions),
            )
        position += len(order)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--fonts", type=Path, required=True)
    parser.add_argument("--out", type=Path, required=True)
    parser.add_argument("--samples", type=int, default=300_000)
    parser.add_argument("--max-gb", type=float, default=4)
    parser.add_argument("--workers", type=int, default=os.cpu_count())
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--mix", type=mixture, help="NAME=WEIGHT,... of groups and sets")
    parser.add_argument("--korean-glyphs", type=Path, help="folder of official drawings")
    parser.add_argument("--scenery", type=Path, help="folder of photos that show no plate")
    args = parser.parse_args()
    args.out.mkdir(parents=True, exist_ok=True)
    fonts = catalogue(args.fonts, args.korean_glyphs)
    scenery = photos(args.scenery)
    make = partial(render, fonts=fonts, seed=args.seed, mix=args.mix, scenery=scenery)
    with Pool(args.workers) as pool:
        for shard in range(-(-args.samples // SHARD)):
            path = args.out / f"shard-{args.seed:03}-{shard:05}.npz"
            if sum(f.stat().st_size for f in args.out.glob("*.npz")) > args.max_gb * 1e9:
                break
            if not path.exists():
                plates = range(shard * SHARD // SHOTS, (shard + 1) * SHARD // SHOTS)
                write(path, [s for shots in pool.map(make, plates, chunksize=16) for s in shots])
                print(path, flush=True)


if __name__ == "__main__":
    main()
