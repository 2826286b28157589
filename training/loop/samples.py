"""Endless samples by number: sample i of a seed is always the same, on any machine.

So the position in the data is one number, and a training that goes on sees no sample twice.
"""

from collections.abc import Callable, Iterator
from random import Random

import torch
from torch.utils.data import DataLoader, IterableDataset, get_worker_info


class Numbered(IterableDataset):
    """Samples number `first` and on; `make` draws one. Workers take whole batches in turn."""

    def __init__(self, make: Callable[[Random], object], seed: int, first: int, batch: int):
        self._make, self._seed, self._first, self._batch = make, seed, first, batch

    def __iter__(self) -> Iterator:
        worker = get_worker_info()
        workers, mine = (worker.num_workers, worker.id) if worker else (1, 0)
        start = self._first + mine * self._batch
        while True:
            for number in range(start, start + self._batch):
                yield self._make(Random(f"{self._seed}:{number}"))
            start += workers * self._batch


def loader(make, seed: int, first: int, batch: int, workers: int) -> DataLoader:
    """Return batches of numbered samples; rendering runs in `workers` processes."""
    return DataLoader(
        Numbered(make, seed, first, batch),
        batch_size=batch,
        num_workers=workers,
        prefetch_factor=4 if workers else None,
        worker_init_fn=_one_thread,
        pin_memory=torch.cuda.is_available(),
        persistent_workers=workers > 0,
    )


def _one_thread(_: int) -> None:
    torch.set_num_threads(1)
