"""The detector's network: anchor-free, strides 8, 16 and 32, plain 3 x 3 convolutions.

Input: N x H x W x 3, RGB, uint8; H and W multiples of 32. The same weights serve every size.
Separable convolutions have fewer products, but a processor trains them six times slower.
"""

import torch
from torch import nn
from torch.nn import functional

STRIDES = (8, 16, 32)
OUTPUTS = 13  # objectness, distances to left, top, right and bottom, four corners as x and y


class Detector(nn.Module):
    """`width` multiplies the channels; 1.0 makes 4.8 MB."""

    def __init__(self, width: float = 1.0):
        super().__init__()
        a, b, c, d = (8 * round(width * n) for n in (2, 4, 8, 12))
        self.stem = nn.Sequential(_dense(3, a, 2), _dense(a, b, 2), _dense(b, b))
        self.stage8 = nn.Sequential(_dense(b, c, 2), _Residual(c))
        self.stage16 = nn.Sequential(_dense(c, d, 2), _Residual(d), _Residual(d))
        self.stage32 = nn.Sequential(_dense(d, d, 2), _Residual(d), _Residual(d))
        self.sides = nn.ModuleList(_point(n, c) for n in (c, d, d))
        self.up = nn.ModuleList([_dense(c, c), _dense(c, c)])
        self.down = nn.ModuleList([_dense(c, c, 2), _dense(c, c, 2)])
        self.heads = nn.ModuleList(
            nn.Sequential(_dense(c, c), nn.Conv2d(c, OUTPUTS, 1)) for _ in STRIDES
        )
        for head in self.heads:  # plates are rare: begin by expecting none
            nn.init.constant_(head[-1].bias[:1], -4.6)

    def forward(self, picture: torch.Tensor) -> torch.Tensor:
        """Return N x points x OUTPUTS raw numbers, the points of stride 8 first, row by row."""
        x = self.stem((picture.permute(0, 3, 1, 2).float() - 127.5) / 64)
        fine = self.stage8(x)
        middle = self.stage16(fine)
        levels = [
            s(x) for s, x in zip(self.sides, (fine, middle, self.stage32(middle)), strict=True)
        ]
        levels[1] = self.up[1](levels[1] + _doubled(levels[2]))
        levels[0] = self.up[0](levels[0] + _doubled(levels[1]))
        levels[1] = levels[1] + self.down[0](levels[0])
        levels[2] = levels[2] + self.down[1](levels[1])
        maps = [head(level) for head, level in zip(self.heads, levels, strict=True)]
        return torch.cat([m.flatten(2).transpose(1, 2) for m in maps], dim=1)


def _doubled(x: torch.Tensor) -> torch.Tensor:
    return functional.interpolate(x, scale_factor=2.0, mode="nearest")


def _dense(inside: int, outside: int, stride: int = 1) -> nn.Sequential:
    return nn.Sequential(
        nn.Conv2d(inside, outside, 3, stride, 1, bias=False), nn.BatchNorm2d(outside), nn.ReLU()
    )


def _point(inside: int, outside: int) -> nn.Sequential:
    return nn.Sequential(
        nn.Conv2d(inside, outside, 1, bias=False), nn.BatchNorm2d(outside), nn.ReLU()
    )


class _Residual(nn.Module):
    def __init__(self, size: int):
        super().__init__()
        self.first = _dense(size, size)
        self.second = nn.Sequential(
            nn.Conv2d(size, size, 3, 1, 1, bias=False), nn.BatchNorm2d(size)
        )

    def forward(self, x: torch.Tensor) -> torch.Tensor:
        return torch.relu(x + self.second(self.first(x)))
