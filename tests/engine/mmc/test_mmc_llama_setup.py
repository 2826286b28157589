"""download_server_bin: the right build, verified, unpacked, tried, and only then switched to."""

import urllib.request
from pathlib import Path

import pytest
from hub_server import Fault
from release_archives import (
    CPU,
    CUDA,
    CUDART,
    VULKAN,
    executable,
    leftovers,
    linux_build,
    linux_cuda_runtime,
    tar_member,
    tar_of,
    version_of,
)
from zelvoran_anpr.mmc import MmcError
from zelvoran_anpr.mmc.fetch import http

pytestmark = pytest.mark.usefixtures("machine")


def test_the_latest_release_is_installed_and_runs(local, hub):
    hub.add_release("b1", {CPU.format("b1"): linux_build("b1")})
    hub.add_release("b2", {CPU.format("b2"): linux_build("b2")})
    info = local.download_server_bin(variant="auto", tag=None)
    expected = local._BIN_DIR / "releases" / "b2-cpu" / "llama-b2" / "llama-server"
    assert info == {"variant": "cpu", "path": str(expected)}
    assert local._server_bin_runs(info["path"])
    assert local.find_server_bin(None) == info["path"]
    assert leftovers(local) == ["current.json", "releases"]


def test_a_pinned_tag(local, hub):
    hub.add_release("b1", {CPU.format("b1"): linux_build("b1")})
    hub.add_release("b2", {CPU.format("b2"): linux_build("b2")})
    assert "b1-cpu" in local.download_server_bin(variant="cpu", tag="b1")["path"]
    assert "b2-cpu" in local.download_server_bin(variant="cpu", tag="latest")["path"]


def test_an_unknown_tag_is_named(local, hub):
    with pytest.raises(MmcError, match="llama.cpp has no release b9; see https://github.com/"):
        local.download_server_bin(tag="b9")


def test_installed_already_downloads_nothing(local, hub):
    hub.add_release("b1", {CPU.format("b1"): linux_build("b1")})
    first = local.download_server_bin()
    assert local.download_server_bin() == first
    assert len(hub.downloads()) == 1


def test_a_newer_release_replaces_the_old_one(local, hub):
    hub.add_release("b1", {CPU.format("b1"): linux_build("b1")})
    local.download_server_bin()
    hub.add_release("b2", {CPU.format("b2"): linux_build("b2")})
    assert version_of(local.download_server_bin()["path"]) == "# b2"
    assert [p.name for p in (local._BIN_DIR / "releases").iterdir()] == ["b2-cpu"]


def test_a_newer_release_that_does_not_run_leaves_the_old_one(local, hub):
    hub.add_release("b1", {CPU.format("b1"): linux_build("b1")})
    old = local.download_server_bin()["path"]
    hub.add_release("b2", {CPU.format("b2"): linux_build("b2", status=3)})
    with pytest.raises(MmcError, match="cpu build of b2 does not run here: it ended with status 3"):
        local.download_server_bin()
    assert local.find_server_bin(None) == old
    assert local._server_bin_runs(old)
    assert ".unpack" not in " ".join(leftovers(local))


@pytest.mark.parametrize(
    "fault", [Fault("drop", "/releases", times=9), Fault("status", "/releases", 500, 9)]
)
def test_without_the_release_page_the_installed_one_is_kept(local, hub, fault):
    hub.add_release("b1", {CPU.format("b1"): linux_build("b1")})
    path = local.download_server_bin()["path"]
    hub.faults = [fault]
    info = local.download_server_bin()
    assert (info["variant"], info["path"]) == ("cpu", path)
    assert info["note"].startswith("kept b1: ")


def test_without_the_release_page_and_nothing_installed(local, home, monkeypatch):
    monkeypatch.setenv("ZELVORAN_LLAMA_RELEASES", "http://127.0.0.1:1/releases")
    with pytest.raises(MmcError, match="cannot reach 127.0.0.1:1: Connection refused"):
        local.download_server_bin()


def test_the_anonymous_limit_is_told(local, hub):
    hub.faults = [Fault("limit", "/releases")]
    with pytest.raises(MmcError, match="allows no more anonymous requests now"):
        local.download_server_bin()


def test_a_release_whose_files_are_still_to_come_is_passed_over(local, hub):
    hub.add_release("b1", {CPU.format("b1"): linux_build("b1")})
    hub.add_release("b2", {"llama-b2-bin-macos-arm64.tar.gz": b"x"})
    assert "b1-cpu" in local.download_server_bin()["path"]


def test_a_variant_that_does_not_exist_here_is_named(local, hub):
    hub.add_release("b1", {CPU.format("b1"): linux_build("b1")})
    with pytest.raises(MmcError, match="llama.cpp b1 has no metal build for this machine"):
        local.download_server_bin(variant="metal")
    with pytest.raises(MmcError, match="unknown variant 'tpu'; choose one of auto, cpu"):
        local.download_server_bin(variant="tpu")


def test_auto_prefers_cuda_with_its_runtime_beside_the_executable(local, hub, machine):
    machine.update(cuda=(12, 9), vulkan=True)
    names = {CPU: linux_build("b1"), VULKAN: linux_build("b1"), CUDA: linux_build("b1", "cuda")}
    hub.add_release(
        "b1",
        {n.format("b1"): c for n, c in names.items()}
        | {CUDART.format("b1"): linux_cuda_runtime("b1")},
    )
    info = local.download_server_bin()
    assert info["variant"] == "cuda"
    assert (Path(info["path"]).parent / "libcudart.so.12").read_bytes() == b"runtime"
    assert version_of(info["path"]) == "# cuda"


def test_auto_falls_back_and_says_why_and_remembers(local, hub, machine):
    machine.update(vulkan=True)
    hub.add_release(
        "b1",
        {CPU.format("b1"): linux_build("b1"), VULKAN.format("b1"): linux_build("b1", status=1)},
    )
    info = local.download_server_bin()
    assert info["variant"] == "cpu"
    assert "the vulkan build of b1 does not run here" in info["note"]
    assert local.download_server_bin() == info
    assert len(hub.downloads()) == 2


def test_an_explicit_variant_does_not_fall_back(local, hub):
    hub.add_release(
        "b1",
        {CPU.format("b1"): linux_build("b1"), VULKAN.format("b1"): linux_build("b1", status=1)},
    )
    with pytest.raises(MmcError, match="vulkan build of b1 does not run here"):
        local.download_server_bin(variant="vulkan")
    assert local.find_server_bin(None) == "llama-server"


def test_a_digest_that_does_not_fit_installs_nothing(local, hub):
    hub.add_release("b1", {CPU.format("b1"): linux_build("b1")})
    hub.faults = [Fault("corrupt", "/storage/", at=50, times=9)]
    with pytest.raises(MmcError, match="arrived damaged twice"):
        local.download_server_bin()
    assert local.find_server_bin(None) == "llama-server"


def test_a_page_without_digests_is_trusted_by_size(local, hub):
    hub.digests = False
    hub.add_release("b1", {CPU.format("b1"): linux_build("b1")})
    assert local.download_server_bin()["variant"] == "cpu"


@pytest.mark.parametrize(
    ("content", "told"),
    [
        (b"not an archive", "not a readable archive"),
        (tar_of(tar_member("llama-b1/README", b"x")), "holds no llama-server"),
        (tar_of(tar_member("../llama-server", executable())), "is unsafe"),
    ],
)
def test_an_archive_that_cannot_be_used_is_told(local, hub, content, told):
    hub.add_release("b1", {CPU.format("b1"): content})
    with pytest.raises(MmcError, match=told):
        local.download_server_bin()
    assert local.find_server_bin(None) == "llama-server"


@pytest.mark.parametrize("tag", ["../../evil", "..", "a/b", "", ".hidden"])
def test_a_tag_that_is_no_folder_name_is_refused(local, hub, tag):
    hub.add_release(tag, {CPU.format("b1"): linux_build("b1")})
    with pytest.raises(MmcError, match="is not a release page"):
        local.download_server_bin()
    assert hub.downloads() == []


def test_an_asset_on_this_disk_is_refused(local, hub, tmp_path):
    hub.add_release("b1", {CPU.format("b1"): linux_build("b1")})
    hub.releases[0]["assets"][0]["browser_download_url"] = f"file://{tmp_path}/x"
    with pytest.raises(MmcError, match="not a usable address: file://"):
        local.download_server_bin()


def test_no_redirect_leaves_encryption():
    request = urllib.request.Request("https://hub.example/a")
    with pytest.raises(MmcError, match="hub.example redirects to an insecure address; refused"):
        http._NoDowngrade().redirect_request(
            request, None, 302, "Found", {}, "http://elsewhere.example/a"
        )
