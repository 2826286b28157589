"""The reader's network: convolutions, one layer of attention, a line of characters to be collapsed.

Input: N x HEIGHT x WIDTH x 3, RGB, uint8. The last map has ROWS x COLUMNS cells; read row after
row they make one sequence, in which equal neighbours are one character and class 0 is the gap
(connectionist temporal classification, Graves et al. 2006). So a plate of two rows needs no
special way, and no cell must count the characters before it.
"""

import torch
from torch import nn

from ..alphabet import CLASSES, GROUPS

ROWS, COLUMNS = 2, 24
CELLS = ROWS * COLUMNS  # steps of the sequence


class Reader(nn.Module):
    """`size`: channels where attention begins; 128 makes a file of 4.9 MB."""

    def __init__(self, size: int = 128):
        super().__init__()
        a, b, c = size // 4, size // 2, 3 * size // 4
        self.backbone = nn.Sequential(
            _convolution(3, a, 2), _convolution(a, b, 2), _Residual(b),
            _convolution(b, c, 2), _Residual(c), _Residual(c),
            _convolution(c, size, (2, 1)), _Residual(size), _convolution(size, size, (2, 1)),
        )  # fmt: skip
        self.places = nn.Parameter(torch.randn(1, CELLS, size) * 0.02)
        self.look = _Layer(size)
        self.norm = nn.LayerNorm(size)
        self.characters = nn.Linear(size, CLASSES)
        self.region = nn.Linear(size, len(GROUPS))

    def forward(self, picture: torch.Tensor) -> tuple[torch.Tensor, torch.Tensor]:
        """Return logits: N x CELLS x CLASSES and N x regions."""
        x = self.backbone(_evened(picture.permute(0, 3, 1, 2).float()))
        x = x.flatten(2).transpose(1, 2) + self.places
        x = self.norm(self.look(x, x))
        return self.characters(x), self.region(x.mean(dim=1))


def _evened(x: torch.Tensor) -> torch.Tensor:
    """Return each picture with mean 0 and spread 1, so that night and glare look like day."""
    x = x - x.mean(dim=(1, 2, 3), keepdim=True)
    return x / ((x * x).mean(dim=(1, 2, 3), keepdim=True).sqrt() + 4)


def _convolution(inside: int, outside: int, stride=1) -> nn.Sequential:
    return nn.Sequential(
        nn.Conv2d(inside, outside, 3, stride, 1, bias=False), nn.BatchNorm2d(outside), nn.ReLU()
    )


class _Residual(nn.Module):
    def __init__(self, size: int):
        super().__init__()
        self.first = _convolution(size, size)
        self.second = nn.Sequential(
            nn.Conv2d(size, size, 3, 1, 1, bias=False), nn.BatchNorm2d(size)
        )

    def forward(self, x: torch.Tensor) -> torch.Tensor:
        return torch.relu(x + self.second(self.first(x)))


class _Layer(nn.Module):
    """Attention of `x` to `seen`, then a step at each place; both are added to `x`."""

    def __init__(self, size: int, heads: int = 4):
        super().__init__()
        self.heads, self.width = heads, size // heads
        self.norm, self.norm_seen, self.norm_after = (nn.LayerNorm(size) for _ in range(3))
        self.query, self.key, self.value = (nn.Linear(size, size) for _ in range(3))
        self.out = nn.Linear(size, size)
        self.step = nn.Sequential(nn.Linear(size, 2 * size), nn.ReLU(), nn.Linear(2 * size, size))

    def forward(self, x: torch.Tensor, seen: torch.Tensor) -> torch.Tensor:
        seen = self.norm_seen(seen)
        query = self._split(self.query(self.norm(x)))
        key, value = self._split(self.key(seen)), self._split(self.value(seen))
        weights = (query @ key.transpose(2, 3) * self.width**-0.5).softmax(dim=-1)
        mixed = (weights @ value).transpose(1, 2).reshape(x.shape)
        x = x + self.out(mixed)
        return x + self.step(self.norm_after(x))

    def _split(self, x: torch.Tensor) -> torch.Tensor:
        return x.view(x.shape[0], x.shape[1], self.heads, self.width).transpose(1, 2)
