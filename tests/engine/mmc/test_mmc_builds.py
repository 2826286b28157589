"""Which files of a real release's list are chosen for which machine."""

import ctypes

import pytest
from zelvoran_anpr.mmc.install import accelerators
from zelvoran_anpr.mmc.install.builds import find_build, wanted_variants
from zelvoran_anpr.mmc.install.releases import Asset, Release

# As the release page of b11211 lists them.
NAMES = """\
cudart-llama-b11211-bin-ubuntu-cuda-12.8-x64.tar.gz
cudart-llama-b11211-bin-ubuntu-cuda-13.4-x64.tar.gz
cudart-llama-bin-win-cuda-12.4-x64.zip
cudart-llama-bin-win-cuda-13.4-x64.zip
llama-b11211-bin-macos-arm64.tar.gz
llama-b11211-bin-macos-arm64-kleidiai.tar.gz
llama-b11211-bin-macos-x64.tar.gz
llama-b11211-bin-ubuntu-arm64.tar.gz
llama-b11211-bin-ubuntu-cuda-12.8-x64.tar.gz
llama-b11211-bin-ubuntu-cuda-13.4-arm64.tar.gz
llama-b11211-bin-ubuntu-cuda-13.4-x64.tar.gz
llama-b11211-bin-ubuntu-openvino-2026.4-x64.tar.gz
llama-b11211-bin-ubuntu-rocm-10.0-x64.tar.gz
llama-b11211-bin-ubuntu-s390x.tar.gz
llama-b11211-bin-ubuntu-sycl-fp16-x64.tar.gz
llama-b11211-bin-ubuntu-vulkan-arm64.tar.gz
llama-b11211-bin-ubuntu-vulkan-x64.tar.gz
llama-b11211-bin-ubuntu-x64.tar.gz
llama-b11211-bin-win-cpu-arm64.zip
llama-b11211-bin-win-cpu-x64.zip
llama-b11211-bin-win-cuda-12.4-x64.zip
llama-b11211-bin-win-cuda-13.4-arm64.zip
llama-b11211-bin-win-cuda-13.4-x64.zip
llama-b11211-bin-win-opencl-adreno-arm64.zip
llama-b11211-bin-win-sycl-x64.zip
llama-b11211-bin-win-vulkan-x64.zip
llama-b11211-xcframework.zip
""".splitlines()
RELEASE = Release("b11211", tuple(Asset(n, f"http://x/{n}", 1, None) for n in NAMES))


def on(monkeypatch, platform, cuda=None, vulkan=False) -> None:
    monkeypatch.setattr(accelerators, "release_platform", lambda: platform)
    monkeypatch.setattr(accelerators, "cuda_driver_version", lambda: cuda)
    monkeypatch.setattr(accelerators, "vulkan_loader", lambda: vulkan)


@pytest.mark.parametrize(
    ("platform", "variant", "cuda", "expected"),
    [
        (("ubuntu", "x64"), "cpu", None, ["llama-b11211-bin-ubuntu-x64.tar.gz"]),
        (("ubuntu", "arm64"), "cpu", None, ["llama-b11211-bin-ubuntu-arm64.tar.gz"]),
        (("ubuntu", "x64"), "vulkan", None, ["llama-b11211-bin-ubuntu-vulkan-x64.tar.gz"]),
        (("ubuntu", "x64"), "metal", None, None),
        (("macos", "arm64"), "metal", None, ["llama-b11211-bin-macos-arm64.tar.gz"]),
        (("macos", "arm64"), "cpu", None, ["llama-b11211-bin-macos-arm64.tar.gz"]),
        (("macos", "x64"), "metal", None, None),
        (("macos", "x64"), "cpu", None, ["llama-b11211-bin-macos-x64.tar.gz"]),
        (("win", "x64"), "cpu", None, ["llama-b11211-bin-win-cpu-x64.zip"]),
        (("win", "arm64"), "vulkan", None, None),
        (("freebsd", "x64"), "cpu", None, None),
        (("win", "x64"), "cuda", (12, 4), [
            "llama-b11211-bin-win-cuda-12.4-x64.zip", "cudart-llama-bin-win-cuda-12.4-x64.zip",
        ]),
        (("win", "x64"), "cuda", (13, 9), [
            "llama-b11211-bin-win-cuda-13.4-x64.zip", "cudart-llama-bin-win-cuda-13.4-x64.zip",
        ]),
        (("ubuntu", "x64"), "cuda", (13, 0), [
            "llama-b11211-bin-ubuntu-cuda-12.8-x64.tar.gz",
            "cudart-llama-b11211-bin-ubuntu-cuda-12.8-x64.tar.gz",
        ]),
        (("ubuntu", "x64"), "cuda", (12, 2), [
            "llama-b11211-bin-ubuntu-cuda-12.8-x64.tar.gz",
            "cudart-llama-b11211-bin-ubuntu-cuda-12.8-x64.tar.gz",
        ]),
        (("ubuntu", "x64"), "cuda", None, [
            "llama-b11211-bin-ubuntu-cuda-12.8-x64.tar.gz",
            "cudart-llama-b11211-bin-ubuntu-cuda-12.8-x64.tar.gz",
        ]),
        (("ubuntu", "arm64"), "cuda", (13, 5), ["llama-b11211-bin-ubuntu-cuda-13.4-arm64.tar.gz"]),
    ],
)  # fmt: skip
def test_the_files_of_a_variant(monkeypatch, platform, variant, cuda, expected):
    on(monkeypatch, platform, cuda)
    build = find_build(RELEASE, variant)
    assert (build and [asset.name for asset in build.assets]) == expected


@pytest.mark.parametrize(
    ("platform", "cuda", "vulkan", "expected"),
    [
        (("ubuntu", "x64"), (12, 4), True, ["cuda", "vulkan", "cpu"]),
        (("ubuntu", "x64"), None, True, ["vulkan", "cpu"]),
        (("win", "x64"), None, False, ["cpu"]),
        (("macos", "arm64"), None, True, ["metal", "cpu"]),
    ],
)
def test_what_auto_tries(monkeypatch, platform, cuda, vulkan, expected):
    on(monkeypatch, platform, cuda, vulkan)
    assert wanted_variants("auto") == expected


def test_the_old_spelling_of_cuda_versions(monkeypatch):
    on(monkeypatch, ("win", "x64"), (12, 4))
    names = ["llama-b4500-bin-win-cuda-cu11.7-x64.zip", "llama-b4500-bin-win-cuda-cu12.4-x64.zip"]
    build = find_build(Release("b4500", tuple(Asset(n, "", 1, None) for n in names)), "cuda")
    assert build.assets[0].name == names[1]


def test_this_machine_answers_without_a_driver_of_its_own():
    """The probes load the drivers' own libraries; where there is none, the answer is a plain no."""
    assert accelerators.vulkan_loader() in (True, False)
    try:
        ctypes.CDLL("libcuda.so.1")
    except OSError:
        assert accelerators.cuda_driver_version() is None
    system, machine = accelerators.release_platform()
    assert system in ("ubuntu", "macos", "win") and machine
