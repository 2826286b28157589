"""gpu-setup with the real ONNX Runtime from the package registry."""

import os
import subprocess

import pytest


def field(number: int, content: bytes | int) -> bytes:
    """One field of a protocol buffer whose number and length are below 16 and 128."""
    if isinstance(content, int):
        return bytes([number << 3, content])
    return bytes([number << 3 | 2, len(content)]) + content


def identity_model() -> bytes:
    """y = x for one real number, as an ONNX model."""

    def real_number(name: bytes) -> bytes:
        shape = field(2, field(1, field(1, 1)))
        return field(1, name) + field(2, field(1, field(1, 1) + shape))

    node = field(1, b"x") + field(2, b"y") + field(4, b"Identity")
    graph = field(1, node) + field(2, b"g") + field(11, real_number(b"x"))
    graph += field(12, real_number(b"y"))
    return field(1, 8) + field(8, field(2, 13)) + field(7, graph)


INFERENCE = f"""
import numpy, onnxruntime
session = onnxruntime.InferenceSession({identity_model()!r}, providers=['CPUExecutionProvider'])
print(session.run(None, {{'x': numpy.array([4.5], dtype='float32')}})[0][0])
"""


@pytest.fixture
def registry(runtime) -> dict[str, str]:
    """The installer as it is configured where the tests run."""
    cache = os.environ.get("PIP_CACHE_DIR") or os.path.expanduser("~/.cache/pip")
    changes = {"ZV_ANPR_PYTHON": runtime.python, "PIP_CACHE_DIR": cache}
    command = [runtime.python, "-m", "pip", "--retries", "0", "index", "versions", "onnxruntime"]
    env = runtime.zv.environment(**changes)
    if subprocess.run(command, env=env, capture_output=True, check=False).returncode != 0:
        pytest.skip("the package registry cannot be reached")
    return changes


def test_install_verify_and_shortcut(runtime, registry):
    status, out, _ = runtime.zv("gpu-setup", "cpu", env=registry)
    assert status == 0, out
    assert "\n  Step 1: Installing onnxruntime...\n" in out
    assert "\n✅ CPUExecutionProvider is available!\n" in out
    assert runtime.script(INFERENCE) == "4.5"
    version = runtime.distributions()["onnxruntime"]

    status, out, _ = runtime.zv("gpu-setup", "cpu", env=registry)
    assert status == 0
    assert (
        f"\n✅ onnxruntime {version} already installed, no conflicts.\n\n🔍 Verifying...\n" in out
    )
    assert "\n✅ CPUExecutionProvider is available!\n" in out

    status, out, _ = runtime.zv("gpu-info", env=registry)
    assert status == 0
    assert f"\n✅ CPU (ONNX Runtime {version})\n❌ CUDA (Not available)\n" in out
    assert "\nBackends ready: cpu\n" in out
