"""Exports a trained reader: ONNX in float and in int8, checked against the network.

    python -m training.reader.export --run runs/reader --fonts FONTS --out models

Input "picture": N x 64 x 192 x 3 uint8 RGB. Outputs "characters": N x CELLS x CLASSES, "region":
N x regions, both probabilities; the alphabet and the regions are in the model's metadata.
"""

import argparse
from pathlib import Path

import numpy as np
import torch
from torch import nn

from ..alphabet import CHARACTERS, GROUPS
from ..fonts import catalogue
from ..onnx_files import add_metadata, check_close, quantise, to_onnx
from ..scene.crop import HEIGHT, WIDTH
from .labelled import rendered
from .load import temperature, trained
from .network import Reader

_CALIBRATION = 256  # rendered plates from which the ranges of int8 come


class _Probabilities(nn.Module):
    def __init__(self, network: Reader, warmth: float):
        super().__init__()
        self.network, self.warmth = network, warmth

    def forward(self, picture: torch.Tensor) -> tuple[torch.Tensor, torch.Tensor]:
        characters, region = self.network(picture)
        return (characters / self.warmth).softmax(dim=2), region.softmax(dim=1)


def export(network: Reader, warmth: float, pictures: np.ndarray, out: Path) -> list[Path]:
    """Write reader_fp32.onnx and reader_int8.onnx; `pictures` calibrate int8. Returns the files."""
    out.mkdir(parents=True, exist_ok=True)
    plain, small = out / "reader_fp32.onnx", out / "reader_int8.onnx"
    whole = _Probabilities(network, warmth).eval()
    example = torch.zeros(2, HEIGHT, WIDTH, 3, dtype=torch.uint8)
    to_onnx(whole, example, plain, "picture", ["characters", "region"], {0: "count"})
    check_close(whole, plain, torch.from_numpy(pictures[:4]))
    # Attention and heads stay in float: they are small, and rounding costs them most.
    quantise(plain, small, "picture", [p[None] for p in pictures], ["Conv"])
    for path in (plain, small):
        add_metadata(path, {"characters": CHARACTERS, "regions": ",".join(GROUPS)})
    return [plain, small]


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--run", type=Path, required=True)
    parser.add_argument("--fonts", type=Path, required=True)
    parser.add_argument("--out", type=Path, required=True)
    args = parser.parse_args()
    plates = rendered(catalogue(args.fonts), _CALIBRATION, seed=7)
    pictures = np.stack([plate.picture for plate in plates])
    for path in export(trained(args.run), temperature(args.run), pictures, args.out):
        print(f"{path} {path.stat().st_size / 1e6:.2f} MB")


if __name__ == "__main__":
    main()
