"""One probe of the environment, in an interpreter of its own: a crash costs only its own answers.

Arguments: the descriptor of the answers and the probe's name. Each finished step sends one line of
JSON; a step that fails ends the probe. What the probed modules print never gets among the answers.
"""

import json
import os
import sys


def pillow():
    import PIL

    yield str(PIL.__version__)


def onnxruntime():
    import onnxruntime as runtime

    yield str(getattr(runtime, "__version__", None) or "")
    yield [str(provider) for provider in runtime.get_available_providers()]


def torch():
    import torch as framework

    yield str(framework.version.cuda) if framework.cuda.is_available() else None


def cuda_runtime():
    import ctypes

    version = ctypes.c_int32(0)
    ctypes.CDLL("libcudart.so").cudaRuntimeGetVersion(ctypes.byref(version))
    yield version.value


def tensorrt():
    import tensorrt as library

    yield str(getattr(library, "__version__", None) or "unknown")


def main():
    descriptor, name = int(sys.argv[1]), sys.argv[2]
    os.set_inheritable(descriptor, False)
    if sys.path[:1] == [""]:  # modules of the folder the user happens to stand in are not ours
        del sys.path[0]
    sys.argv[:] = ["zv-anpr"]
    os.environ["ORT_DISABLE_TELEMETRY"] = "1"  # its builds send usage data to their maker
    try:
        for answer in globals()[name]():
            os.write(descriptor, (json.dumps(answer) + "\n").encode("ascii"))
    except BaseException:
        pass
    os._exit(0)  # a module's clean-up may take long, or crash


main()
