"""gpu-setup on other systems and machines, as the environment's interpreter names them."""

import pytest

CPU, GPU, DIRECTML = "onnxruntime", "onnxruntime-gpu", "onnxruntime-directml"
MACOS = (
    "onnxruntime-gpu (CUDA) is not available on macOS. Apple Silicon/Intel Macs use CPU inference. "
    "Run: zv-anpr gpu-setup cpu"
)
ARM = (
    "onnxruntime-gpu CUDA wheels are x86_64-only. ARM64 Linux must use CPU inference. "
    "Run: zv-anpr gpu-setup cpu"
)
NO_DIRECTML = (
    "onnxruntime-directml is Windows-only (detected: {}). Run: zv-anpr gpu-setup cpu or cuda."
)
REFUSED = [
    ("cuda", "Darwin", "arm64", MACOS),
    ("gpu", "Darwin", "x86_64", MACOS),
    ("cuda", "Linux", "aarch64", ARM),
    ("gpu", "Linux", "ARM64", ARM),
    ("directml", "Darwin", "arm64", NO_DIRECTML.format("Darwin")),
    ("directml", "FreeBSD", "amd64", NO_DIRECTML.format("FreeBSD")),
    ("directml", "", "", NO_DIRECTML.format("")),
]


@pytest.mark.parametrize("target, system, machine, reason", REFUSED)
def test_a_refusal_touches_nothing(runtime, target, system, machine, reason):
    runtime.zv.pretend(system, machine)
    runtime.have(GPU, CPU)
    before = runtime.files()
    expected = (1, runtime.title(target) + f"\n✗ {reason}\n")
    assert runtime.run("gpu-setup", target) == expected
    assert runtime.files() == before


@pytest.mark.parametrize(
    "target, system, machine",
    [
        ("cpu", "Darwin", "arm64"),
        ("cpu", "Linux", "aarch64"),
        ("cpu", "", ""),
        ("cuda", "Windows", "ARM64"),
        ("cuda", "FreeBSD", "arm64"),
        ("cuda", "linux", "aarch64"),
    ],
)
def test_everything_else_is_tried(runtime, target, system, machine):
    runtime.zv.pretend(system, machine)
    status, out = runtime.run("gpu-setup", target)
    assert status == 1
    assert "\n  Step 1: Installing " in out


FLAVOURS = {"cpu": CPU, "cuda": GPU, "directml": DIRECTML}
PROVIDERS = {"cpu": "CPU", "cuda": "CUDA", "directml": "Dml"}


@pytest.mark.parametrize(
    "before, after", [(old, new) for old in FLAVOURS for new in FLAVOURS if old != new]
)
def test_every_flavour_follows_every_other_on_windows(runtime, before, after):
    runtime.zv.pretend("Windows", "AMD64")
    old, new = FLAVOURS[before], FLAVOURS[after]
    runtime.have(old)
    runtime.offer(new)
    status, out = runtime.run("gpu-setup", after)
    requirement = new + ("[cuda,cudnn]" if after == "cuda" else "")
    assert status == 0
    assert out.startswith(
        runtime.title(after)
        + f"\n📦 Currently installed:\n   {old} 1.19.2\n"
        + f"\n🔧 Setting up {after} backend...\n"
        + "   (atomic: install new → verify → remove old; rollback on failure)\n"
        + f"\n  Step 1: Installing {new}...\n"
        + runtime.pip("install", requirement)
        + f"\n  Step 2: Verifying {new} import...\n"
        + "  ✓ onnxruntime 1.19.2 imports OK\n"
        + "\n  Step 3: Removing conflicting packages...\n"
        + f"  Uninstalling {old}...\n"
        + runtime.pip("uninstall", old, "-y")
        + f"\n  Step 3b: Restoring {new} files shared with the removed package...\n"
        + runtime.pip("install", "--force-reinstall", "--no-deps", new)
        + "  ✓ onnxruntime 1.19.2 imports OK\n"
        + f"\n🔍 Verifying...\n✅ {PROVIDERS[after]}ExecutionProvider is available!\n"
    )
    assert out.endswith(
        f"\n✅ Done. Use --backend {after} to enable:\n"
        f"   zv-anpr photo.jpg --backend {after}\n"
        "   zv-anpr server start  (set backend in server_config.yaml)\n"
    )
    assert runtime.session_runs_on() == new


def test_directml_that_is_there_is_only_verified(runtime):
    runtime.zv.pretend("Windows", "AMD64")
    runtime.have(DIRECTML)
    before = runtime.files()
    assert runtime.run("gpu-setup", "directml") == (
        0,
        runtime.title("directml")
        + "\n📦 Currently installed:\n   onnxruntime-directml 1.19.2\n"
        + "\n✅ onnxruntime-directml 1.19.2 already installed, no conflicts.\n"
        + "\n🔍 Verifying...\n✅ DmlExecutionProvider is available!\n"
        + "   Providers: DmlExecutionProvider, CPUExecutionProvider\n"
        + "\n✅ Done. Use --backend directml to enable:\n"
        + "   zv-anpr photo.jpg --backend directml\n"
        + "   zv-anpr server start  (set backend in server_config.yaml)\n",
    )
    assert runtime.files() == before


def test_a_missing_directml_provider_has_no_advice_about_cuda(runtime):
    runtime.zv.pretend("Windows", "AMD64")
    runtime.have(DIRECTML)
    (runtime.site / "onnxruntime" / "_flavour.py").write_text(
        "class InferenceSession: pass\n"
        "def get_available_providers():\n    return ['CPUExecutionProvider']\n"
    )
    out = runtime.run("gpu-setup", "directml")[1]
    assert (
        "\n⚠️  DmlExecutionProvider not found in providers: CPUExecutionProvider\n\n✅ Done. " in out
    )
