"""Networks to ONNX files: export, comparison with the network, static int8, metadata."""

from pathlib import Path

import numpy as np
import onnx
import torch
from torch import nn

OPSET = 17


def to_onnx(network: nn.Module, example: torch.Tensor, path: Path, name: str, outputs: list[str],
            free: dict[int, str]) -> None:  # fmt: skip
    """Write a network as one file; `free` names the axes of the input that may vary.

    The outputs' first axis varies with the input's, their second one where other axes vary.
    """
    varying = {0: free[0]} if 0 in free else {1: "points"}
    axes = {name: free, **dict.fromkeys(outputs, varying)}
    with torch.inference_mode():
        torch.onnx.export(
            network, (example,), str(path), input_names=[name], output_names=outputs,
            opset_version=OPSET, dynamic_axes=axes, dynamo=False, do_constant_folding=True,
        )  # fmt: skip
    onnx.checker.check_model(onnx.load(str(path)))


def check_close(network: nn.Module, path: Path, example: torch.Tensor, within: float = 1e-3):
    """Raise ValueError when the file's outputs differ from the network's."""
    with torch.inference_mode():
        wanted = [output.numpy() for output in network(example)]
    found = run(path, example.numpy())
    for one, other in zip(wanted, found, strict=True):
        worst = float(np.abs(one - other).max()) / max(1.0, float(np.abs(one).max()))
        if worst > within:
            raise ValueError(f"{path} differs from the network by {worst:.5f}")


def run(path: Path, picture: np.ndarray) -> list[np.ndarray]:
    """Return the file's outputs for one input."""
    import onnxruntime

    onnxruntime.disable_telemetry_events()
    session = onnxruntime.InferenceSession(str(path), providers=["CPUExecutionProvider"])
    return session.run(None, {session.get_inputs()[0].name: picture})


class _Pictures:
    """Feeds the calibration: one picture a time."""

    def __init__(self, name: str, pictures: list[np.ndarray]):
        self._feed = iter([{name: picture} for picture in pictures])

    def get_next(self) -> dict | None:
        return next(self._feed, None)


def quantise(path: Path, target: Path, name: str, pictures: list[np.ndarray], kinds: list[str]):
    """Write a static int8 version whose nodes of these kinds work on 8-bit numbers."""
    from onnxruntime.quantization import QuantFormat, QuantType, quantize_static
    from onnxruntime.quantization.shape_inference import quant_pre_process

    draft = target.with_suffix(".draft.onnx")
    quant_pre_process(str(path), str(draft), skip_symbolic_shape=True)
    quantize_static(
        str(draft), str(target), _Pictures(name, pictures), quant_format=QuantFormat.QDQ,
        op_types_to_quantize=kinds, per_channel=True, activation_type=QuantType.QUInt8,
        weight_type=QuantType.QInt8, extra_options={"ActivationSymmetric": False},
    )  # fmt: skip
    draft.unlink()


def add_metadata(path: Path, facts: dict[str, str]) -> None:
    """Write facts into a file's metadata."""
    model = onnx.load(str(path))
    onnx.helper.set_model_props(model, facts)
    onnx.save(model, str(path))
