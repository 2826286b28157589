"""download_server_bin that is killed, meets a full disk, or runs twice at once."""

import json
import os
import signal
import subprocess

import pytest
from hub_server import Fault
from processes import wait_until
from release_archives import CPU, leftovers, linux_build, version_of
from zelvoran_anpr.mmc import MmcError

pytestmark = pytest.mark.usefixtures("machine")


@pytest.mark.parametrize("how", [signal.SIGKILL, signal.SIGINT])
def test_killed_while_downloading_and_run_again(local, hub, run, how):
    hub.add_release("b1", {CPU.format("b1"): linux_build("b1")})
    old = local.download_server_bin(variant="cpu")["path"]
    archive = linux_build("b2", padding=os.urandom(1_000_000))
    hub.add_release("b2", {CPU.format("b2"): archive})
    hub.faults = [Fault("stall", "/storage/", at=600_000)]
    child = run("module.download_server_bin(variant='cpu')")
    parts = lambda: list(local._BIN_DIR.glob("downloads/*"))  # noqa: E731
    wait_until(lambda: (parts() and parts()[0].stat().st_size == 600_000) or child.poll())
    assert local.find_server_bin(None) == old and local._server_bin_runs(old)
    child.send_signal(how)
    assert child.wait(10) != 0
    hub.faults, hub.sent = [], 0
    assert version_of(local.download_server_bin(variant="cpu")["path"]) == "# b2"
    assert hub.sent == len(archive) - 600_000
    assert leftovers(local) == ["current.json", "releases"]


def test_killed_while_unpacking_and_run_again(local, hub, run):
    hub.add_release("b1", {CPU.format("b1"): linux_build("b1")})
    old = local.download_server_bin(variant="cpu")["path"]
    hub.add_release("b2", {CPU.format("b2"): linux_build("b2", padding=bytes(150 << 20))})
    child = run("module.download_server_bin(variant='cpu')")
    wait_until(lambda: list(local._BIN_DIR.glob(".unpack-*/*/libllama*")) or child.poll(), 60)
    assert local.find_server_bin(None) == old and local._server_bin_runs(old)
    child.kill()
    child.wait()
    hub.sent = 0
    assert version_of(local.download_server_bin(variant="cpu")["path"]) == "# b2"
    assert hub.sent == 0
    assert leftovers(local) == ["current.json", "releases"]


def test_a_full_disk_leaves_the_old_one_and_a_rerun_completes(local, hub, tmp_path):
    disk = local._BIN_DIR
    disk.mkdir(parents=True)
    mount = subprocess.run(
        ["/bin/mount", "-t", "tmpfs", "-o", "size=3m", "none", disk], check=False
    )
    if mount.returncode != 0:
        pytest.skip("mounting a small disk needs root")
    try:
        hub.add_release("b1", {CPU.format("b1"): linux_build("b1")})
        old = local.download_server_bin()["path"]
        ballast = disk / "ballast"
        ballast.write_bytes(bytes(1 << 20))
        hub.add_release("b2", {CPU.format("b2"): linux_build("b2", padding=os.urandom(1_200_000))})
        with pytest.raises(MmcError, match="free some space|not enough space"):
            local.download_server_bin()
        assert local.find_server_bin(None) == old and local._server_bin_runs(old)
        ballast.unlink()
        assert version_of(local.download_server_bin()["path"]) == "# b2"
    finally:
        subprocess.run(["/bin/umount", disk], check=True)


def test_two_set_ups_at_once_install_once(local, hub, run):
    hub.add_release("b1", {CPU.format("b1"): linux_build("b1")})
    code = "print(module.download_server_bin(variant='cpu')['path'])"
    both = [run(code), run(code)]
    paths = {child.communicate(timeout=60)[0].strip() for child in both}
    assert paths == {local.find_server_bin(None)}
    assert len(hub.downloads()) == 1


def test_the_record_survives_a_broken_write(local, hub):
    hub.add_release("b1", {CPU.format("b1"): linux_build("b1")})
    local.download_server_bin()
    (local._BIN_DIR / "current.json").write_text("{")
    assert local.find_server_bin(None) == "llama-server"
    assert version_of(local.download_server_bin()["path"]) == "# b1"
    record = json.loads((local._BIN_DIR / "current.json").read_text())
    assert (record["tag"], record["variant"]) == ("b1", "cpu")
