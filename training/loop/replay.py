"""Uses each rendered sample more than once: where a GPU learns faster than the cores render.

The second use comes from another batch, and the training shifts its light and place anew.
"""

from collections.abc import Iterable, Iterator

import torch


def replayed(batches: Iterable[tuple], times: int, pool: int) -> Iterator[tuple[tuple, int]]:
    """Yield (batch, how many of its samples are fresh) from a pool of `pool` samples.

    Batches are tuples of tensors, samples first. Each fresh batch is followed by `times` - 1
    batches drawn from the pool.
    """
    kept: list[torch.Tensor] = []
    held = 0
    for batch in batches:
        size = len(batch[0])
        yield batch, size
        if times < 2:
            continue
        if not kept:
            kept = [torch.empty((pool, *part.shape[1:]), dtype=part.dtype) for part in batch]
        places = torch.arange(held, held + size) % pool
        for store, part in zip(kept, batch, strict=True):
            store[places] = part
        held += size
        for _ in range(times - 1):
            chosen = torch.randint(min(held, pool), (size,))
            yield tuple(store[chosen] for store in kept), 0
