"""gpu-info in environments of every kind: what it prints never depends on a probe surviving."""

import subprocess
import sys

import pytest
from gpu_machine import (
    CPU,
    CUDA,
    DIRECTML,
    HEAD,
    TENSORRT,
    TORCH,
    WITHOUT_ANYTHING,
)

pytestmark = pytest.mark.skipif(sys.platform == "win32", reason="Windows reports more")


def test_nothing_is_installed(environment):
    assert environment.report() == WITHOUT_ANYTHING


def test_the_whole_report_of_a_cuda_machine(environment):
    environment.module("PIL", "__version__ = '11.0.0'")
    environment.runtime(TENSORRT, CUDA, CPU)
    environment.module("torch", TORCH.format(available=True))
    environment.module("tensorrt", "__version__ = '10.3'")
    assert (
        environment.report()
        == HEAD
        + """Pillow: 11.0.0

🚀 Model Backend Support (V14–V16):
----------------------------------------
✅ CPU (ONNX Runtime 1.19.2)
✅ CUDA (CUDA 12.6) (GPU acceleration available)
⚠️  DirectML (Windows only)
✅ TensorRT 10.3 (NVIDIA optimization)

📋 Summary:
----------------------------------------
Available models: V17
Backends ready: cpu, cuda, tensorrt

💡 Tips:
"""
    )


@pytest.mark.parametrize(
    "version, shown", [("'11.0'", "11.0"), ("''", ""), ("'ü'", "ü"), ("1 / 0", "installed")]
)
def test_the_image_librarys_version(environment, version, shown):
    environment.module("PIL", f"__version__ = {version}")
    assert environment.line("Pillow") == f"Pillow: {shown}"


@pytest.mark.parametrize("version", ["", None])
def test_a_runtime_without_a_version(environment, version):
    environment.runtime(CPU, version=version)
    assert environment.line("CPU (") == "✅ CPU (ONNX Runtime)"
    assert environment.line("CUDA") == "❌ CUDA (Not available)"
    assert environment.line("TensorRT") == "❌ TensorRT (Not available)"


def test_a_runtime_that_cannot_list_its_providers(environment):
    environment.module("onnxruntime", "__version__ = '1.0'")
    out = environment.report()
    assert "\n✅ CPU (ONNX Runtime 1.0)\n❌ CUDA (Cannot check)\n" in out
    assert "\n❌ TensorRT (Cannot check)\n" in out
    assert "\nBackends ready: cpu\n" in out


def test_a_crash_while_listing_keeps_the_version(environment):
    environment.module(
        "onnxruntime",
        "import os\n__version__ = '1.0'\ndef get_available_providers():\n    os.abort()",
    )
    assert environment.line("CPU (") == "✅ CPU (ONNX Runtime 1.0)"
    assert environment.line("CUDA") == "❌ CUDA (Cannot check)"


def test_torch_without_cuda_ends_the_question(environment):
    environment.runtime(CUDA)
    environment.module("torch", TORCH.format(available=False))
    line = environment.line("✅ CUDA", LD_LIBRARY_PATH=str(environment.cuda_library(12040)))
    assert line == "✅ CUDA (GPU acceleration available)"


@pytest.mark.parametrize("version, text", [(12040, "12.4"), (11080, "11.8"), (12000, "12.0")])
def test_the_cuda_runtime_answers_when_torch_cannot(environment, version, text):
    environment.runtime(CUDA)
    line = environment.line("✅ CUDA", LD_LIBRARY_PATH=str(environment.cuda_library(version)))
    assert line == f"✅ CUDA (CUDA {text}) (GPU acceleration available)"


def test_nobody_knows_the_cuda_version(environment):
    environment.runtime(CUDA)
    (environment.folder / "libcudart.so").write_text("no library")
    line = environment.line("✅ CUDA", LD_LIBRARY_PATH=str(environment.folder))
    assert line == "✅ CUDA (GPU acceleration available)"


@pytest.mark.parametrize("text", ["", "__version__ = None", "__version__ = ''"])
def test_tensorrt_that_the_runtime_does_not_use(environment, text):
    environment.runtime(CPU)
    environment.module("tensorrt", text)
    assert (
        "\n   ⚠️  TensorRT unknown installed but not in ONNX Runtime\n"
        "   💡 Install: pip install onnxruntime-gpu\n"
    ) in environment.report()


@pytest.mark.parametrize(
    "providers, line, ready, tips",
    [
        (
            ["DmlExecutionProvider", CPU],
            "✅ DirectML (Windows GPU acceleration)",
            "cpu, directml",
            "",
        ),
        (
            [CPU],
            "❌ DirectML (Not available on Windows)",
            "cpu",
            "• For DirectML: zv-anpr gpu-setup directml\n",
        ),
    ],
)
def test_directml_on_windows(environment, providers, line, ready, tips):
    environment.zv.pretend("Windows", "AMD64")
    environment.runtime(*providers)
    out = environment.report()
    assert f"\n❌ CUDA (Not available)\n{line}\n❌ TensorRT (Not available)\n" in out
    assert out.endswith(f"\nBackends ready: {ready}\n\n💡 Tips:\n{tips}")


def test_windows_without_a_runtime(environment):
    environment.zv.pretend("Windows", "AMD64")
    out = environment.report()
    assert (
        "\n❌ CUDA (Cannot check)\n❌ DirectML (Cannot check)\n❌ TensorRT (Cannot check)\n" in out
    )
    assert out.endswith(
        "\n💡 Tips:\n• Install onnxruntime: pip install onnxruntime\n"
        "• For DirectML: zv-anpr gpu-setup directml\n"
    )


@pytest.mark.parametrize("system", ["Darwin", "FreeBSD", "windows", ""])
def test_directml_elsewhere(environment, system):
    environment.zv.pretend(system, "arm64")
    environment.runtime(DIRECTML)
    out = environment.report()
    assert "\n⚠️  DirectML (Windows only)\n" in out
    assert out.endswith("\nBackends ready: cpu\n\n💡 Tips:\n")


def test_the_real_modules_of_this_interpreter(zv):
    """No stand-ins: what the interpreter that runs the tests really has."""
    script = "import PIL; print(PIL.__version__)"
    command = [sys.executable, "-c", script]
    pillow = subprocess.run(command, capture_output=True, text=True, check=False)
    expected = pillow.stdout.strip() if pillow.returncode == 0 else "installed"
    status, out, _ = zv("gpu-info")
    assert status == 0
    assert f"\nPillow: {expected}\n" in out
