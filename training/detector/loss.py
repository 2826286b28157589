"""What the detector is taught: which points answer for which plate, and how well they should.

A plate is given to the points that already see it best (task-aligned assignment), so that score
and fit go together. Boxes are N x M x 4, corners N x M x 8 in pixels, padded with zeros.
"""

import torch
from torch.nn import functional

from .points import boxes, corners, grid

_CANDIDATES = 10  # points per plate
_FIT = 4.0  # how much the fit counts against the score when points are chosen
_WEIGHTS = {"score": 1.0, "box": 2.0, "corners": 1.5}


def overlap(one: torch.Tensor, other: torch.Tensor) -> tuple[torch.Tensor, torch.Tensor]:
    """Return intersection over union, and its generalised form, of boxes (... x 4)."""
    low, high = (
        torch.maximum(one[..., :2], other[..., :2]),
        torch.minimum(one[..., 2:], other[..., 2:]),
    )
    shared = (high - low).clamp(min=0).prod(-1)
    areas = [(box[..., 2:] - box[..., :2]).clamp(min=0).prod(-1) for box in (one, other)]
    union = areas[0] + areas[1] - shared + 1e-6
    hull = torch.maximum(one[..., 2:], other[..., 2:]) - torch.minimum(one[..., :2], other[..., :2])
    around = hull.clamp(min=0).prod(-1) + 1e-6
    iou = shared / union
    return iou, iou - (around - union) / around


@torch.no_grad()
def assign(score, found, centres, strides, wanted) -> tuple[torch.Tensor, torch.Tensor]:
    """Return per point the plate it answers for (N x P, -1 for none) and its target score.

    `score` is N x P, `found` N x P x 4, `wanted` N x M x 4.
    """
    real = (wanted[..., 2] > wanted[..., 0])[:, None]
    fit = overlap(found[:, :, None], wanted[:, None])[0]
    near = _near(centres, strides, wanted) & real
    merit = score.sigmoid()[..., None].sqrt() * fit.clamp(min=1e-4) ** _FIT * near
    # Before anything fits, nearness decides: every plate has points from the first step.
    merit = merit + 1e-9 * near / (1 + _distance(centres, strides, wanted))
    best = merit.topk(min(_CANDIDATES, merit.shape[1]), dim=1)
    chosen = torch.zeros_like(merit).scatter_(1, best.indices, best.values)
    value, plate = chosen.max(dim=2)
    top = merit.amax(dim=1, keepdim=True)
    top_fit = (fit * near).amax(dim=1, keepdim=True)
    aim = (chosen / (top + 1e-12) * top_fit.clamp(min=0.05)).gather(2, plate[..., None])[..., 0]
    return torch.where(value > 0, plate, -1), torch.where(value > 0, aim, 0.0)


def _near(centres, strides, wanted) -> torch.Tensor:
    """Tell which points lie in which boxes; small boxes count as at least two strides wide."""
    middle = (wanted[..., :2] + wanted[..., 2:]) / 2
    half = (wanted[..., 2:] - wanted[..., :2]) / 2
    reach = torch.maximum(half[:, None], strides[None, :, None, None])
    return ((centres[None, :, None] - middle[:, None]).abs() < reach).all(-1)


def _distance(centres, strides, wanted) -> torch.Tensor:
    """Return how far points are from a plate in place and size: small ones belong to stride 8."""
    middle = (wanted[..., :2] + wanted[..., 2:]) / 2
    away = (centres[None, :, None] - middle[:, None]).norm(dim=-1) / strides[None, :, None]
    side = (wanted[..., 2:] - wanted[..., :2]).amax(-1).clamp(min=1)[:, None]
    return away + (side / (8 * strides[None, :, None])).log2().abs()


def loss(network: torch.nn.Module, batch: tuple) -> dict[str, torch.Tensor]:
    """Return the terms for (pictures, boxes, corners); corners of unknown place are zeros."""
    pictures, wanted, wanted_corners = batch
    raw = network(pictures).float()
    centres, strides = grid(*pictures.shape[1:3], raw.device)
    found = boxes(raw, centres, strides)
    plate, aim = assign(raw[..., 0].detach(), found.detach(), centres, strides, wanted)
    total = aim.sum().clamp(min=1)
    score = functional.binary_cross_entropy_with_logits(raw[..., 0], aim, reduction="none")
    weight = (raw[..., 0].sigmoid().detach() - aim).abs() ** 1.5  # easy background counts little
    terms = {"score": (score * weight).sum() / total}
    picked = plate >= 0
    row = torch.arange(len(plate), device=plate.device)[:, None].expand_as(plate)[picked]
    target, to = wanted[row, plate[picked]], wanted_corners[row, plate[picked]]
    share = aim[picked] / total
    terms["box"] = ((1 - overlap(found[picked], target)[1]) * share).sum()
    at = corners(raw, centres, strides)[picked]
    scale = (target[:, 2:] - target[:, :2]).clamp(min=4).repeat(1, 4)
    known = (to.abs().sum(1) > 0).float()
    gap = functional.smooth_l1_loss(at / scale, to / scale, beta=0.03, reduction="none").mean(1)
    terms["corners"] = 4 * (gap * known * share).sum()
    whole = sum(_WEIGHTS[name] * term for name, term in terms.items())
    return {"loss": whole, **terms}
