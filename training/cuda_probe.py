"""Writes the smallest model that makes a GPU work: python -m training.cuda_probe

`y = x + x` for one float, in a format that the oldest supported ONNX Runtime reads.
"""

from pathlib import Path

import onnx
from onnx import TensorProto, helper

FILE = Path(__file__).parents[1] / "engine" / "zelvoran_anpr" / "reading" / "cuda_probe.onnx"


def model() -> onnx.ModelProto:
    x, y = (helper.make_tensor_value_info(name, TensorProto.FLOAT, [1]) for name in "xy")
    graph = helper.make_graph([helper.make_node("Add", ["x", "x"], ["y"])], "probe", [x], [y])
    return helper.make_model(graph, ir_version=8, opset_imports=[helper.make_opsetid("", 13)])


if __name__ == "__main__":
    onnx.save(model(), FILE)
