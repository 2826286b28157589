"""gpu-info in environments of every kind: what it prints never depends on a probe surviving."""

import subprocess
import sys
import time
from pathlib import Path

import pytest

pytestmark = pytest.mark.skipif(sys.platform == "win32", reason="Windows reports more")

HEAD = """Zelvoran ANPR System Information
==================================================

📦 Package Version: 3.2.1

📊 Image Backend:
----------------------------------------
"""
WITHOUT_ANYTHING = (
    HEAD
    + """Pillow: installed

🚀 Model Backend Support (V14–V16):
----------------------------------------
❌ CPU (ONNX Runtime not installed)
❌ CUDA (Cannot check)
⚠️  DirectML (Windows only)
❌ TensorRT (Cannot check)

📋 Summary:
----------------------------------------
Available models: V17
⚠️  No backends available - install onnxruntime

💡 Tips:
• Install onnxruntime: pip install onnxruntime
"""
)
CPU = "CPUExecutionProvider"
CUDA = "CUDAExecutionProvider"
DIRECTML = "DmlExecutionProvider"
TENSORRT = "TensorrtExecutionProvider"
TORCH = """
class cuda:
    is_available = staticmethod(lambda: {available})
class version:
    cuda = "12.6"
"""


class Environment:
    """Modules that shadow the interpreter's own, in front of its search path."""

    def __init__(self, zv) -> None:
        self.zv = zv
        self.folder: Path = zv.engine_folder
        for name in ("PIL", "onnxruntime", "torch", "tensorrt"):
            self.module(name, "raise ModuleNotFoundError('not here')")

    def module(self, name: str, text: str) -> None:
        (self.folder / f"{name}.py").write_text(text, encoding="utf-8")

    def runtime(self, *providers: str, version: str | None = "1.19.2", before: str = "") -> None:
        line = f"__version__ = {version!r}" if version is not None else ""
        listing = f"def get_available_providers():\n    return {list(providers)!r}\n"
        self.module("onnxruntime", f"{before}\n{line}\n{listing}")

    def distribution(self, name: str, version: str, folder: str | None = None) -> None:
        folder = folder or f"{name.replace('-', '_')}-{version}"
        path = self.folder / f"{folder}.dist-info"
        path.mkdir()
        (path / "METADATA").write_text(f"Metadata-Version: 2.1\nName: {name}\nVersion: {version}\n")

    def cuda_library(self, version: int) -> Path:
        source = self.folder / "cudart.c"
        source.write_text(f"int cudaRuntimeGetVersion(int* v) {{ *v = {version}; return 0; }}")
        subprocess.run(
            ["cc", "-shared", "-fPIC", "-o", self.folder / "libcudart.so", source], check=True
        )
        return self.folder

    def report(self, **env: str) -> str:
        status, out, err = self.zv("gpu-info", env=env)
        assert (status, err) == (0, "")
        return out

    def line(self, about: str, **env: str) -> str:
        return next(line for line in self.report(**env).splitlines() if about in line)


@pytest.fixture
def environment(zv) -> Environment:
    return Environment(zv)


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


BREAKS = {
    "raises": "raise RuntimeError('broken')",
    "exits": "import sys; sys.exit(3)",
    "ends the process": "import os; os._exit(0)",
    "crashes": "import os; os.abort()",
    "interrupts": "raise KeyboardInterrupt",
    "is no Python": "def (",
    "prints and raises": "print('{' * 100_000, flush=True); raise ValueError",
}


@pytest.mark.parametrize("text", BREAKS.values(), ids=BREAKS.keys())
def test_modules_that_break_when_imported(environment, text):
    for name in ("PIL", "onnxruntime", "torch", "tensorrt"):
        environment.module(name, text)
    assert environment.report() == WITHOUT_ANYTHING


@pytest.mark.parametrize("text", BREAKS.values(), ids=BREAKS.keys())
def test_a_broken_module_costs_only_its_own_answer(environment, text):
    environment.module("PIL", text)
    environment.module("torch", text)
    environment.module("tensorrt", text)
    environment.runtime(TENSORRT, CUDA, CPU)
    out = environment.report(LD_LIBRARY_PATH=str(environment.cuda_library(11080)))
    assert "\nPillow: installed\n" in out
    assert "\n✅ CPU (ONNX Runtime 1.19.2)\n" in out
    assert "\n✅ CUDA (CUDA 11.8) (GPU acceleration available)\n" in out
    assert "\n✅ TensorRT (NVIDIA optimization)\n" in out


def test_noise_of_modules_is_not_taken_for_an_answer(environment):
    noise = "import os\nprint('[\"9.9\"]')\nos.write(2, b'\\xff' * 200_000)\n"
    environment.module("PIL", noise + "__version__ = '10.0'")
    environment.runtime(CUDA, before=noise)
    environment.module("torch", noise + TORCH.format(available=True))
    out = environment.report()
    assert "9.9" not in out
    assert "\nPillow: 10.0\n" in out
    assert "(CUDA 12.6)" in out


def test_a_hostile_start_of_the_interpreter(environment):
    environment.runtime(CPU)
    environment.module("sitecustomize", "import os\nos.write(1, b'noise')\nos.write(2, b'noise')")
    status, out, _ = environment.zv("gpu-info")
    assert status == 0
    assert "\n✅ CPU (ONNX Runtime 1.19.2)\n" in out


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


def test_modules_of_the_working_folder_are_not_asked(environment):
    (environment.zv.folder / "PIL.py").write_text("__version__ = 'wrong'")
    assert "wrong" not in environment.report()


CUDA_CONFLICT = (
    "\n💡 Tips:\n"
    "⚠️  Both onnxruntime (CPU) and onnxruntime-gpu are installed — GPU provider may be hidden\n"
    "   Fix: zv-anpr gpu-setup cuda\n"
)


def test_two_runtimes_side_by_side(environment):
    environment.runtime(CPU)
    environment.distribution("OnnxRuntime", "1.19.2")
    environment.distribution("onnxruntime-directml", "1.19.2")
    assert environment.report().endswith(
        "\n💡 Tips:\n⚠️  Both onnxruntime (CPU) and onnxruntime-directml are installed — "
        "DirectML provider may be hidden\n   Fix: zv-anpr gpu-setup directml\n"
    )
    environment.distribution("ONNXRuntime-GPU", "1.20.0")
    assert environment.report().endswith(CUDA_CONFLICT)


def test_an_interrupted_removal_is_no_conflict(environment):
    environment.runtime(CPU)
    environment.distribution("onnxruntime", "1.19.2")
    environment.distribution("onnxruntime-gpu", "1.19.2", folder="~nnxruntime_gpu-1.19.2")
    assert environment.report().endswith("\n💡 Tips:\n")


def test_unreadable_metadata_is_no_conflict(environment):
    environment.runtime(CPU)
    environment.distribution("onnxruntime", "1.19.2")
    environment.distribution("onnxruntime-gpu", "1.19.2")
    environment.module(
        "sitecustomize",
        "from importlib import metadata\nmetadata.distributions = None",
    )
    assert environment.report().endswith("\n💡 Tips:\n")


def test_probes_run_at_the_same_time(environment):
    """Each waits until it sees the others, so one after the other would never end."""
    meet = (
        "import os, pathlib, time\n"
        "folder = pathlib.Path(os.environ['MEETING'])\n"
        "(folder / __name__).touch()\n"
        "while len(list(folder.iterdir())) < 4:\n"
        "    time.sleep(0.01)\n"
    )
    meeting = environment.zv.home / "meeting"
    meeting.mkdir()
    environment.module("PIL", meet + "__version__ = '11'")
    environment.runtime(TENSORRT, CUDA, before=meet)
    environment.module("torch", meet + TORCH.format(available=True))
    environment.module("tensorrt", meet + "__version__ = '10'")
    out = environment.report(MEETING=str(meeting))
    assert "\nPillow: 11\n" in out
    assert "\n✅ CUDA (CUDA 12.6)" in out
    assert "\n✅ TensorRT 10 " in out


def test_a_probe_that_is_not_needed_is_not_waited_for(environment):
    environment.runtime(CPU)
    environment.module("torch", "import time\ntime.sleep(600)")
    start = time.monotonic()
    assert environment.line("CUDA") == "❌ CUDA (Not available)"
    assert time.monotonic() - start < 300


def test_ctrl_c_ends_it(environment):
    import os
    import signal

    started = environment.zv.home / "started"
    environment.module("onnxruntime", f"import time\nopen({str(started)!r}, 'w')\ntime.sleep(600)")
    process = environment.zv.popen("gpu-info", start_new_session=True)
    while not started.exists():
        time.sleep(0.01)
    os.killpg(process.pid, signal.SIGINT)
    out, err = process.communicate(timeout=60)
    assert process.returncode == 1
    assert out.decode().endswith("\nOperation cancelled.\n")
    assert err == b""


def test_the_real_modules_of_this_interpreter(zv):
    """No stand-ins: what the interpreter that runs the tests really has."""
    script = "import PIL; print(PIL.__version__)"
    command = [sys.executable, "-c", script]
    pillow = subprocess.run(command, capture_output=True, text=True, check=False)
    expected = pillow.stdout.strip() if pillow.returncode == 0 else "installed"
    status, out, _ = zv("gpu-info")
    assert status == 0
    assert f"\nPillow: {expected}\n" in out


def test_what_could_not_be_asked_is_no_answer(zv):
    """The engine takes the descriptors of the program away, so that it can start no probe."""
    zv.engine_file(
        "_version.py",
        "import os, resource\n"
        "__version__ = '3.2.1'\n"
        "resource.prlimit(os.getppid(), resource.RLIMIT_NOFILE, (3, 3))\n",
    )
    status, out, _ = zv("gpu-info")
    assert status == 1
    assert out.splitlines()[-1] == "Error: [Errno 24] Too many open files: '/dev/null'"
    assert "No backends available" not in out
