"""gpu-setup with real installs and removals: what it says, and what is installed afterwards."""

import json
import os
import signal
from pathlib import Path

import pytest
from gpu_setup_lines import (
    CPU,
    CPU_WORKS,
    CUDA_WORKS,
    DIRECTML,
    GPU,
    ONLY_CPU,
    ONLY_GPU,
    SETTING_UP,
)
from processes import wait_until
from runtime_wheels import (
    NOISY,
    SLOW_TO_LEAVE,
    wheel_name,
)

FOLDER = Path(__file__).parent


def test_directml_is_refused_here_and_nothing_runs(runtime):
    runtime.have(CPU)
    before = runtime.files()
    reason = (
        "onnxruntime-directml is Windows-only (detected: Linux). "
        "Run: zv-anpr gpu-setup cpu or cuda."
    )
    assert runtime.run("gpu-setup", "directml") == (
        1,
        runtime.title("directml") + f"\n✗ {reason}\n",
    )
    assert runtime.files() == before


def test_cuda_over_cpu_is_the_default(runtime):
    runtime.have(CPU)
    runtime.offer(GPU)
    status, out = runtime.run("gpu-setup")
    assert out == (
        runtime.title("cuda")
        + "\n📦 Currently installed:\n   onnxruntime 1.19.2\n"
        + SETTING_UP.format("cuda")
        + "\n  Step 1: Installing onnxruntime-gpu...\n"
        + runtime.pip("install", "onnxruntime-gpu[cuda,cudnn]")
        + "\n  Step 2: Verifying onnxruntime-gpu import...\n"
        + "  ✓ onnxruntime 1.19.2 imports OK\n"
        + "\n  Step 3: Removing conflicting packages...\n"
        + "  Uninstalling onnxruntime...\n"
        + runtime.pip("uninstall", "onnxruntime", "-y")
        + "\n  Step 3b: Restoring onnxruntime-gpu files shared with the removed package...\n"
        + runtime.pip("install", "--force-reinstall", "--no-deps", "onnxruntime-gpu")
        + "  ✓ onnxruntime 1.19.2 imports OK\n"
        + CUDA_WORKS
    )
    assert status == 0
    assert runtime.distributions() == ONLY_GPU
    assert runtime.session_runs_on() == GPU
    assert not list(runtime.folder.glob(".zv*"))


def test_an_empty_environment_gets_the_cpu_runtime(runtime):
    runtime.offer(CPU)
    assert runtime.run("gpu-setup", "cpu") == (
        0,
        runtime.title("cpu")
        + SETTING_UP.format("cpu")
        + "\n  Step 1: Installing onnxruntime...\n"
        + runtime.pip("install", "onnxruntime")
        + "\n  Step 2: Verifying onnxruntime import...\n"
        + "  ✓ onnxruntime 1.19.2 imports OK\n"
        + CPU_WORKS,
    )
    assert runtime.distributions() == ONLY_CPU


def test_a_conflict_is_found_and_fixed(runtime):
    runtime.have(GPU, CPU)
    assert runtime.run("gpu-info")[1].endswith(
        "💡 Tips:\n"
        "⚠️  Both onnxruntime (CPU) and onnxruntime-gpu are installed — GPU provider may be hidden\n"
        "   Fix: zv-anpr gpu-setup cuda\n"
    )
    status, out = runtime.run("gpu-setup", "cuda")
    assert status == 0
    assert out.startswith(
        runtime.title("cuda")
        + "\n⚠️  Both onnxruntime (CPU) and onnxruntime-gpu are installed — "
        + "GPU provider may be hidden\n"
        + "\n📦 Currently installed:\n   onnxruntime 1.19.2\n   onnxruntime-gpu 1.19.2\n"
        + SETTING_UP.format("cuda")
        + "\n  Step 1: Reinstalling onnxruntime-gpu...\n"
        + runtime.pip("install", "--force-reinstall", "onnxruntime-gpu[cuda,cudnn]")
    )
    assert out.endswith(CUDA_WORKS)
    assert runtime.distributions() == ONLY_GPU
    assert runtime.session_runs_on() == GPU
    assert runtime.run("gpu-info")[1].endswith("💡 Tips:\n")


def test_back_to_cpu_removes_both_others_in_order_and_no_fourth(runtime):
    runtime.have(DIRECTML, GPU, CPU)
    info = runtime.site / "onnxruntime_training-1.2.dist-info"
    info.mkdir()
    (info / "METADATA").write_text(
        "Metadata-Version: 2.1\nName: ONNXruntime-training\nVersion: 1.2\n"
    )
    status, out = runtime.run("gpu-setup", "cpu")
    assert (
        "\n📦 Currently installed:\n   onnxruntime 1.19.2\n   onnxruntime-directml 1.19.2\n"
        "   onnxruntime-gpu 1.19.2\n   onnxruntime-training 1.2\n"
    ) in out
    assert (
        "\n  Step 1: Reinstalling onnxruntime...\n"
        + runtime.pip("install", "--force-reinstall", "onnxruntime")
        in out
    )
    assert (
        "\n  Step 3: Removing conflicting packages...\n"
        "  Uninstalling onnxruntime-gpu...\n"
        + runtime.pip("uninstall", "onnxruntime-gpu", "-y")
        + "  Uninstalling onnxruntime-directml...\n"
        + runtime.pip("uninstall", "onnxruntime-directml", "-y")
        + "\n  Step 3b: Restoring onnxruntime files shared with the removed package...\n"
        + runtime.pip("install", "--force-reinstall", "--no-deps", "onnxruntime")
    ) in out
    assert out.endswith(CPU_WORKS)
    assert status == 0
    assert runtime.distributions() == {**ONLY_CPU, "ONNXruntime-training": "1.2"}
    assert runtime.session_runs_on() == CPU


def test_cpu_that_is_there_is_only_verified(runtime):
    runtime.have(CPU)
    before = runtime.files()
    assert runtime.run("gpu-setup", "cpu") == (
        0,
        runtime.title("cpu")
        + "\n📦 Currently installed:\n   onnxruntime 1.19.2\n"
        + "\n✅ onnxruntime 1.19.2 already installed, no conflicts.\n"
        + CPU_WORKS,
    )
    assert runtime.files() == before


def test_gpu_that_is_there_gets_its_libraries(runtime):
    runtime.have(GPU)
    assert runtime.run("gpu-setup", "gpu") == (
        0,
        runtime.title("gpu")
        + "\n📦 Currently installed:\n   onnxruntime-gpu 1.19.2\n"
        + "\n✅ onnxruntime-gpu 1.19.2 already installed, no conflicts.\n"
        + "   Making sure the NVIDIA CUDA libraries are there too...\n"
        + runtime.pip("install", "onnxruntime-gpu[cuda,cudnn]")
        + CUDA_WORKS,
    )
    assert runtime.distributions() == ONLY_GPU


def test_libraries_that_cannot_be_had_do_not_matter(runtime):
    runtime.have(GPU)
    (runtime.links / wheel_name("nvidia-cudnn-cu12", "12.0")).unlink()
    status, out = runtime.run("gpu-setup", "cuda")
    assert status == 0
    assert "  ✗ Failed: ERROR: Could not find a version that satisfies the requirement" in out
    assert out.endswith(CUDA_WORKS)
    assert runtime.distributions() == {GPU: "1.19.2"}


@pytest.mark.parametrize("head", [NOISY, SLOW_TO_LEAVE])
def test_what_the_runtime_prints_is_not_taken_for_an_answer(runtime, head):
    runtime.offer(GPU, head=head)
    status, out = runtime.run("gpu-setup", "cuda")
    assert status == 0
    assert out.endswith(CUDA_WORKS)


def test_the_first_marked_line_counts(runtime):
    runtime.have(GPU)
    providers = '["CUDAExecutionProvider"]'
    start = f"print('PROVIDERS_JSON:{providers}')\nprint('PROVIDERS_JSON:no JSON')\n"
    module = runtime.site / "onnxruntime" / "__init__.py"
    module.write_text(start + module.read_text())
    runtime.cuda_problem("later", before="print('CUDA_PROBLEM:null')")
    out = runtime.run("gpu-setup", "cuda")[1]
    assert "   Providers: CUDAExecutionProvider\n   GPU ready: onnxruntime starts CUDA\n" in out


def test_the_installers_own_text_is_shown_whole(runtime):
    """An installer that cannot even start: its text is shown to the last byte, whatever it is."""
    installer = runtime.site / "pip" / "__main__.py"
    installer.unlink()  # it is a link to the template's
    noise = "sys.stdout.buffer.write(b'  \\xff' + b'y' * 300_000 + b' \\n')"
    installer.write_text(f"import sys\nsys.stderr.write(' \\n')\n{noise}\nsys.exit(4)\n")
    status, out = runtime.run("gpu-setup", "cpu")
    assert status == 1
    assert f"\n  ✗ Failed: \ufffd{'y' * 300_000}\n\n✗ Failed to install onnxruntime.\n" in out


def test_an_interpreter_that_is_gone_is_an_error(runtime):
    runtime.zv.engine_file(
        "_version.py", "import sys\nsys.executable += '-gone'\n__version__ = '1'\n"
    )
    status, out = runtime.run("gpu-setup", "cpu")
    assert status == 1
    assert out.endswith(f"Error: [Errno 2] No such file or directory: '{runtime.python}-gone'\n")


def test_modules_of_the_folder_the_user_stands_in_are_not_judged(runtime):
    runtime.offer(CPU)
    for name in ("onnxruntime.py", "json.py"):
        (runtime.zv.folder / name).write_text("raise ImportError('of the folder')\n")
    status, out = runtime.run("gpu-setup", "cpu")
    assert (status, out.endswith(CPU_WORKS)) == (0, True)
    assert runtime.distributions() == ONLY_CPU


def test_a_second_run_in_the_same_environment_is_refused(runtime):
    """Until the first one ends, however it ends."""
    runtime.offer(CPU)
    hook = runtime.zv.engine_folder / "sitecustomize.py"
    hook.write_text((FOLDER / "stall.py").read_text())
    reached = runtime.zv.folder / "reached"
    stall = {"words": "pip install", "event": None, "path": "", "reached": str(reached)}
    env = runtime.variables(ZV_TEST_STALL=json.dumps(stall))
    first = runtime.zv.popen("gpu-setup", "cpu", env=env, start_new_session=True)
    wait_until(reached.exists)
    assert runtime.run("gpu-setup", "cpu") == (
        1,
        runtime.title("cpu")
        + "\n✗ Another gpu-setup is changing this environment; wait until it has ended.\n",
    )
    os.killpg(first.pid, signal.SIGKILL)
    first.communicate()
    hook.unlink()
    status, out, _ = runtime.zv("gpu-setup", "cpu", env=runtime.variables())
    assert (status, out.endswith(CPU_WORKS)) == (0, True)
