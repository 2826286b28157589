"""The detector's network: anchor-free, strides 8, 16 and 32, separable convolutions throughout.

Input: N x H x W x 3, RGB, uint8; H and W multiples of 32. The same weights serve every size.
"""

import torch
from torch import nn
from torch.nn import functional

STRIDES = (8, 16, 32)
OUTPUTS = 13  # objectness, distances to left, top, right and bottom, four corners as x and y


class Detector(nn.Module):
    """`width` multiplies the channels; 1.0 makes about 2.3 MB."""

    def __init__(self, width: float = 1.0):
        super().__init__()
        a, b, c, d, e, f = (8 * round(width * n) for n in (2, 4, 8, 12, 16, 8))
        self.stem = nn.Sequential(_dense(3, a, 2), _dense(a, b, 2), _Block(b, b))
        self.stage8 = nn.Sequential(_dense(b, c, 2), _Block(c, c), _Block(c, c))
        self.stage16 = nn.Sequential(_Block(c, d, 2), *[_Block(d, d) for _ in range(4)])
        self.stage32 = nn.Sequential(_Block(d, e, 2), *[_Block(e, e) for _ in range(3)])
        self.sides = nn.ModuleList(_point(n, f) for n in (c, d, e))
        self.up = nn.ModuleList([_Block(f, f), _Block(f, f)])
        self.down = nn.ModuleList([_Block(f, f, 2), _Block(f, f, 2)])
        self.heads = nn.ModuleList(
            nn.Sequential(_Block(f, f), _Block(f, f), nn.Conv2d(f, OUTPUTS, 1)) for _ in STRIDES
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


def _dense(inside: int, outside: int, stride: int) -> nn.Sequential:
    return nn.Sequential(
        nn.Conv2d(inside, outside, 3, stride, 1, bias=False), nn.BatchNorm2d(outside), nn.ReLU()
    )


def _point(inside: int, outside: int) -> nn.Sequential:
    return nn.Sequential(
        nn.Conv2d(inside, outside, 1, bias=False), nn.BatchNorm2d(outside), nn.ReLU()
    )


class _Block(nn.Module):
    """A 5 x 5 convolution per channel, then across channels; added to its input where it fits."""

    def __init__(self, inside: int, outside: int, stride: int = 1):
        super().__init__()
        self.deep = nn.Conv2d(inside, inside, 5, stride, 2, groups=inside, bias=False)
        self.norm = nn.BatchNorm2d(inside)
        self.wide = _point(inside, 2 * inside)
        self.narrow = nn.Sequential(
            nn.Conv2d(2 * inside, outside, 1, bias=False), nn.BatchNorm2d(outside)
        )
        self.same = stride == 1 and inside == outside

    def forward(self, x: torch.Tensor) -> torch.Tensor:
        y = self.narrow(self.wide(self.norm(self.deep(x))))
        return x + y if self.same else torch.relu(y)
