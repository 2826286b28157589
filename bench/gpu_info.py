"""How long gpu-info takes over the slowest of its probes.

Runs `zv-anpr gpu-info`, every probe by itself and an empty program of one environment in turn, and
prints the medians. Usage: gpu_info.py ZV_ANPR PYTHON [ROUNDS]
"""

import os
import statistics
import subprocess
import sys
import time

START = "pass"
PROBES = {
    "Pillow": "import PIL; PIL.__version__",
    "ONNX Runtime": "import onnxruntime; onnxruntime.get_available_providers()",
    "torch": "import torch; torch.cuda.is_available()",
    "TensorRT": "import tensorrt",
}
BOUND = 1.2


def seconds(command: list[str], environment: dict[str, str]) -> float:
    start = time.perf_counter()
    subprocess.run(command, env=environment, capture_output=True, check=False)
    return time.perf_counter() - start


def main() -> None:
    program, python = sys.argv[1:3]
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 20
    environment = {**os.environ, "ZV_ANPR_PYTHON": python}
    commands = {
        "gpu-info": [program, "gpu-info"],
        "start": [python, "-c", START],
        **{name: [python, "-c", text] for name, text in PROBES.items()},
    }
    for command in commands.values():
        seconds(command, environment)
    taken: dict[str, list[float]] = {name: [] for name in commands}
    for _ in range(rounds):
        for name, command in commands.items():
            taken[name].append(seconds(command, environment))
    medians = {name: statistics.median(times) for name, times in taken.items()}
    for name, median in medians.items():
        print(f"{name:13} {median * 1000:7.1f} ms (median of {rounds})")
    slowest = max(PROBES, key=lambda name: medians[name])
    bound = BOUND * medians[slowest] + medians["start"]
    print(f"bound         {bound * 1000:7.1f} ms ({BOUND} x {slowest} + the interpreter's start)")
    print(f"ratio to it   {medians['gpu-info'] / bound:7.2f}")


if __name__ == "__main__":
    main()
