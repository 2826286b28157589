"""From the network's raw numbers to boxes and corners in pixels of its input."""

import torch
from torch.nn import functional

from .network import STRIDES


def grid(height: int, width: int, device=None) -> tuple[torch.Tensor, torch.Tensor]:
    """Return the points' centres (P x 2, pixels) and their strides (P) for an input's size."""
    centres, strides = [], []
    for stride in STRIDES:
        y = torch.arange(height // stride, device=device, dtype=torch.float32) + 0.5
        x = torch.arange(width // stride, device=device, dtype=torch.float32) + 0.5
        rows, columns = torch.meshgrid(y, x, indexing="ij")
        centres.append(torch.stack([columns, rows], -1).reshape(-1, 2) * stride)
        strides.append(torch.full((len(x) * len(y),), float(stride), device=device))
    return torch.cat(centres), torch.cat(strides)


def boxes(raw: torch.Tensor, centres: torch.Tensor, strides: torch.Tensor) -> torch.Tensor:
    """Return left, top, right, bottom: N x P x 4."""
    reach = functional.softplus(raw[..., 1:5]) * strides[:, None] * 2
    return torch.cat([centres - reach[..., :2], centres + reach[..., 2:]], dim=-1)


def corners(raw: torch.Tensor, centres: torch.Tensor, strides: torch.Tensor) -> torch.Tensor:
    """Return four corners as x, y, clockwise from the upper left: N x P x 8."""
    return centres.repeat(1, 4) + raw[..., 5:13] * strides[:, None] * 2
