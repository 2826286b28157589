"""Exports a trained detector to ONNX, checked against the network.

    python -m training.detector.export --run runs/detector --out models

Input "picture": N x H x W x 3 uint8 RGB, sides multiples of 32. Outputs for P points, in pixels of
the input: "scores" N x P (0..1), "boxes" N x P x 4, "corners" N x P x 8.
"""

import argparse
from pathlib import Path

import torch
from torch import nn

from ..onnx_files import check_close, to_onnx
from .network import STRIDES, Detector
from .points import boxes, corners

_SIZE = (384, 640)


class Plates(nn.Module):
    """The network with its decoding; sizes may vary, so the points are counted at run time."""

    def __init__(self, network: Detector):
        super().__init__()
        self.network = network

    def forward(self, picture: torch.Tensor) -> tuple[torch.Tensor, torch.Tensor, torch.Tensor]:
        raw = self.network(picture)
        centres, strides = self._grid(picture)
        scores = raw[..., 0].sigmoid()
        return scores, boxes(raw, centres, strides), corners(raw, centres, strides)

    def _grid(self, picture: torch.Tensor) -> tuple[torch.Tensor, torch.Tensor]:
        centres, strides = [], []
        for stride in STRIDES:
            # Running sums of ones count the rows and columns inside the exported graph.
            ones = torch.ones_like(picture[0, ::stride, ::stride, 0], dtype=torch.float32)
            x, y = ones.cumsum(1) - 0.5, ones.cumsum(0) - 0.5
            centres.append(torch.stack([x, y], -1).reshape(-1, 2) * stride)
            strides.append(ones.reshape(-1) * stride)
        return torch.cat(centres), torch.cat(strides)


def trained(run: Path) -> Detector:
    """Return the averaged network of RUN/checkpoint.pt."""
    state = torch.load(run / "checkpoint.pt", map_location="cpu", weights_only=False)
    network = Detector(state["plan"]["width"])
    network.load_state_dict(state["parts"]["average"]["network"])
    return network.eval()


def export(network: Detector, out: Path) -> Path:
    """Write detector_fp32.onnx; raises ValueError when it differs from the network."""
    out.mkdir(parents=True, exist_ok=True)
    path = out / "detector_fp32.onnx"
    whole = Plates(network).eval()
    example = torch.randint(0, 255, (2, *_SIZE, 3), dtype=torch.uint8)
    outputs = ["scores", "boxes", "corners"]
    to_onnx(whole, example, path, "picture", outputs, {0: "count", 1: "height", 2: "width"})
    for height, width in (_SIZE, (320, 192)):
        check_close(whole, path, torch.randint(0, 255, (3, height, width, 3), dtype=torch.uint8))
    return path


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--run", type=Path, required=True)
    parser.add_argument("--out", type=Path, required=True)
    args = parser.parse_args()
    path = export(trained(args.run), args.out)
    print(f"{path} {path.stat().st_size / 1e6:.2f} MB")


if __name__ == "__main__":
    main()
