"""Damaged variants of inputs, the same ones in every run."""

from collections.abc import Iterator, Sequence
from random import Random

EDGES = (b"\0", b"\xff", b"\x7f", b"\x80", b"\r\n", b'"', b"{", b"[", b"\xed\xa0\xbd", b"9" * 30)


def variants(seeds: Sequence[bytes], count: int, tokens: Sequence[bytes] = ()) -> Iterator[bytes]:
    """Yield the seeds and, for each, so many variants; `tokens` are words of the language."""
    random = Random(17)
    for seed in seeds:
        yield seed
        for _ in range(count):
            data = bytearray(seed)
            for _ in range(random.randint(1, 4)):
                _damage(data, random, [*EDGES, *tokens])
            yield bytes(data)


def _damage(data: bytearray, random: Random, tokens: Sequence[bytes]) -> None:
    at, end = sorted(random.randint(0, len(data)) for _ in range(2))
    end = min(end, at + 16)
    match random.randrange(6):
        case 0:
            data[at:end] = b""
        case 1:
            data[at:at] = random.choice(tokens)
        case 2:
            data[at:end] = random.choice(tokens)
        case 3:
            data[at:at] = data[at:end] * random.randint(1, 3)
        case 4:
            del data[at + (len(data) - at) // 2 :]
        case _:
            for place in range(at, min(at + 2, len(data))):
                data[place] = random.randrange(256)
