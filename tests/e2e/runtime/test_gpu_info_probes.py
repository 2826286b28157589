"""gpu-info where modules break, print, hang or stand beside each other."""

import os
import sys
import time

import pytest
from gpu_machine import BREAKS, CPU, CUDA, CUDA_CONFLICT, TENSORRT, TORCH, WITHOUT_ANYTHING

pytestmark = pytest.mark.skipif(sys.platform == "win32", reason="Windows reports more")


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


def test_modules_of_the_working_folder_are_not_asked(environment):
    (environment.zv.folder / "PIL.py").write_text("__version__ = 'wrong'")
    assert "wrong" not in environment.report()


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


@pytest.mark.skipif(
    "asan" in os.environ.get("ZV_ANPR_EXE", ""), reason="sanitizers need descriptors of their own"
)
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
