"""gpu-setup where a step fails: what it says, what it puts back, and what is installed then."""

import pytest
from gpu_setup_lines import CPU, CUDA_LIBRARIES, CUDA_WORKS, DIRECTML, DONE, GPU, ONLY_CPU, ONLY_GPU
from runtime_wheels import (
    NEEDS_CPU_PACKAGE,
    NO_IMPORT,
    wheel_name,
    withdrawn_when_imported,
)


@pytest.mark.parametrize("fault", ["nothing on offer", "needs what is not there"])
def test_step_1_fails_and_nothing_changes(runtime, fault):
    runtime.have(CPU)
    if fault == "needs what is not there":
        runtime.offer(GPU, needs="a-package-that-nobody-made")
    before = runtime.files()
    status, out = runtime.run("gpu-setup", "cuda")
    assert status == 1
    assert "\n  ✗ Failed: ERROR: Could not find a version that satisfies the requirement" in out
    assert out.endswith(
        "\n\n✗ Failed to install onnxruntime-gpu.\n"
        "   Environment UNCHANGED — your previous setup still works.\n"
        "   Manual retry: pip install onnxruntime-gpu\n"
    )
    assert runtime.files() == before
    assert runtime.session_runs_on() == CPU


def test_step_2_fails_for_cuda_and_cpu_comes_back(runtime):
    runtime.have(CPU)
    runtime.offer(GPU, head=NO_IMPORT)
    status, out = runtime.run("gpu-setup", "cuda")
    assert status == 1
    failure = out.split("  ✗ onnxruntime import failed after install:\n")[1]
    error, rest = failure.split("\n   Rolling back:")
    assert error.startswith("    Traceback (most recent call last):\n")
    assert len(error) == 4 + 200
    assert rest == (
        " removing onnxruntime-gpu and reinstalling onnxruntime CPU...\n"
        + runtime.pip("uninstall", "onnxruntime-gpu", "-y")
        + runtime.pip("install", "onnxruntime")
    )
    # The distribution is there again, as the installer sees it.
    assert runtime.distributions() == {**ONLY_CPU, **CUDA_LIBRARIES}


def test_step_2_fails_for_cuda_in_an_empty_environment(runtime):
    runtime.offer(GPU, head=NO_IMPORT)
    runtime.offer(CPU)
    assert runtime.run("gpu-setup", "cuda")[0] == 1
    assert runtime.distributions() == {**ONLY_CPU, **CUDA_LIBRARIES}
    assert runtime.session_runs_on() == CPU


def test_step_2_fails_for_cpu_and_leaves_no_runtime(runtime):
    runtime.offer(CPU, head=NO_IMPORT)
    status, out = runtime.run("gpu-setup", "cpu")
    assert status == 1
    assert out.endswith(
        "   Rolling back: removing onnxruntime and reinstalling onnxruntime CPU...\n"
        + runtime.pip("uninstall", "onnxruntime", "-y")
    )
    assert runtime.distributions() == {}


def test_a_conflict_that_cannot_be_removed_is_left(runtime):
    runtime.have(CPU, DIRECTML)
    (runtime.site / "onnxruntime-1.19.2.dist-info" / "RECORD").unlink()
    runtime.offer(GPU)
    status, out = runtime.run("gpu-setup", "cuda")
    assert status == 0
    removal = out.split("  Uninstalling onnxruntime...\n")[1]
    assert removal.startswith(runtime.pip("uninstall", "onnxruntime", "-y") + "  ✗ Failed: ")
    assert (
        "\n  ⚠️  Could not uninstall onnxruntime — but onnxruntime-gpu is installed and works.\n"
        "     You may see provider conflicts. Run manually: pip uninstall onnxruntime -y\n"
        "  Uninstalling onnxruntime-directml...\n"
    ) in removal
    assert out.endswith(CUDA_WORKS)
    assert runtime.distributions() == {**ONLY_CPU, **ONLY_GPU}
    assert runtime.session_runs_on() == GPU


def test_step_3b_finds_nothing_to_install(runtime):
    runtime.have(CPU)
    wheel = runtime.links / wheel_name(GPU, "1.19.2")
    runtime.offer(GPU, head=withdrawn_when_imported(wheel))
    status, out = runtime.run("gpu-setup", "cuda")
    assert status == 1
    assert out.endswith(
        "\n\n✗ Could not reinstall onnxruntime-gpu after removing the old package.\n"
        "   onnxruntime is very likely broken right now. Fix with:\n"
        "     pip install --force-reinstall onnxruntime-gpu\n"
    )
    assert runtime.distributions() == ONLY_GPU


def test_the_import_is_still_broken_after_3b(runtime):
    runtime.have(CPU)
    runtime.offer(GPU, head=NEEDS_CPU_PACKAGE)
    status, out = runtime.run("gpu-setup", "cuda")
    assert status == 1
    last = out.split("Step 3b")[1].split("\n", 2)[2]
    error, rest = last.split("\n", 1)
    assert error.startswith(
        "  ✗ ImportError: cannot import name '_only_onnxruntime' from partially"
    )
    assert len(error) == 4 + 160
    assert rest == (
        "\n✗ onnxruntime still does not import cleanly.\n"
        "   Fix with: pip install --force-reinstall onnxruntime-gpu\n"
    )
    assert runtime.distributions() == ONLY_GPU


def test_cuda_that_cannot_start(runtime):
    runtime.have(GPU)
    runtime.cuda_problem("Ä" * 250, before="print('CUDA_PROBLEM'); print('noise')")
    status, out = runtime.run("gpu-setup", "cuda")
    assert status == 0
    assert out.endswith(
        "\n🔍 Verifying...\n"
        "⚠️  onnxruntime-gpu is installed, but CUDA cannot start:\n"
        f"   {'Ä' * 200}\n"
        "   Models would run on the CPU. Possible causes:\n"
        "   • the NVIDIA libraries are missing: pip install 'onnxruntime-gpu[cuda,cudnn]'\n"
        "   • the NVIDIA driver is older than this onnxruntime-gpu needs (check: nvidia-smi)\n"
        + DONE.format("cuda")
    )


def test_a_check_of_cuda_that_crashes_is_a_problem(runtime):
    runtime.have(GPU)
    runtime.cuda_problem(None, before="import os; os.abort()")
    assert (
        "CUDA cannot start:\n   could not check whether CUDA starts\n"
        in runtime.run("gpu-setup", "cuda")[1]
    )


def test_a_provider_that_is_missing(runtime):
    runtime.offer(GPU, providers=["AzureExecutionProvider", "CPUExecutionProvider"])
    status, out = runtime.run("gpu-setup", "cuda")
    assert status == 0
    assert out.endswith(
        "\n🔍 Verifying...\n"
        "⚠️  CUDAExecutionProvider not found in providers: "
        "AzureExecutionProvider, CPUExecutionProvider\n"
        "   Possible causes:\n"
        "   • onnxruntime-gpu is not installed: pip install 'onnxruntime-gpu[cuda,cudnn]'\n"
        "   • the NVIDIA driver is missing or too old\n"
        "   Check: nvidia-smi\n" + DONE.format("cuda")
    )


def test_a_missing_cpu_provider_has_no_further_advice(runtime):
    runtime.offer(CPU, providers=["AzureExecutionProvider"])
    assert runtime.run("gpu-setup", "cpu")[1].endswith(
        "⚠️  CPUExecutionProvider not found in providers: AzureExecutionProvider\n"
        + DONE.format("cpu")
    )


def test_no_providers_at_all(runtime):
    runtime.offer(CPU, providers=[])
    status, out = runtime.run("gpu-setup", "cpu")
    assert status == 0
    assert out.endswith("\n🔍 Verifying...\n✗ Cannot read providers after install\n")


def test_an_installed_runtime_that_does_not_import(runtime):
    runtime.have(CPU)
    message = "é" * 300
    text = f"print('PROVIDERS_JSON', flush=True)\nraise RuntimeError({message!r})"
    (runtime.site / "onnxruntime" / "__init__.py").write_text(text, encoding="utf-8")
    status, out = runtime.run("gpu-setup", "cpu")
    assert status == 0
    shown = f"RuntimeError: {message}"[:160]
    assert out.endswith(
        f"already installed, no conflicts.\n\n🔍 Verifying...\n"
        f"✗ Cannot read providers after install\n   {shown}\n"
    )
