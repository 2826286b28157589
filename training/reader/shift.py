"""Changes light, contrast and place of pictures on the training device: cheap variety."""

import torch
from torch.nn import functional


def varied(pictures: torch.Tensor) -> torch.Tensor:
    """Return N x H x W x 3 uint8 pictures, each changed a little in its own way (float, 0..255)."""
    x = pictures.permute(0, 3, 1, 2).float()
    x = functional.grid_sample(x, _grid(x), padding_mode="border", align_corners=False)
    gain, level = _each(x, 0.12), _each(x, 0.0)
    tint = 1 + 0.04 * torch.randn(x.shape[0], 3, 1, 1, device=x.device)
    x = (x - 127.5) * (1 + gain) * tint + 127.5 + 14 * level.normal_()
    grain = 2.5 * torch.rand(x.shape[0], 1, 1, 1, device=x.device)
    x = x + grain * torch.randn_like(x)
    negative = (torch.rand(x.shape[0], 1, 1, 1, device=x.device) < 0.03).float()
    x = negative * (255 - x) + (1 - negative) * x
    return x.clamp(0, 255).permute(0, 2, 3, 1)


def _each(x: torch.Tensor, spread: float) -> torch.Tensor:
    return spread * torch.randn(x.shape[0], 1, 1, 1, device=x.device)


def _grid(x: torch.Tensor) -> torch.Tensor:
    """Return sampling places: shifts and stretches of about 2 %, a shear of about 2 degrees."""
    count = x.shape[0]
    turn = torch.eye(2, 3, device=x.device).repeat(count, 1, 1)
    noise = torch.tensor([[0.02, 0.03, 0.02], [0.03, 0.02, 0.03]], device=x.device)
    turn = turn + noise * torch.randn(count, 2, 3, device=x.device)
    return functional.affine_grid(turn, list(x.shape), align_corners=False)
