"""remove_server_bin, remove_models and _dir_size: all of the folder, and nothing but the folder."""

import os
import subprocess
import tempfile
from pathlib import Path

import pytest
from zelvoran_anpr.mmc import MmcError
from zelvoran_anpr.mmc.install import removal

NOTHING = {"removed": False, "freed_bytes": 0}
needs_root = pytest.mark.skipif(os.geteuid() != 0, reason="needs root")


@pytest.fixture
def folder(local) -> Path:
    """The models' folder with 30 bytes in two files."""
    path = local._MODEL_DIR
    (path / "sub").mkdir(parents=True)
    (path / "a.gguf").write_bytes(bytes(10))
    (path / "sub" / "b.gguf").write_bytes(bytes(20))
    return path


def test_nothing_there(local):
    assert local.remove_models() == NOTHING
    assert local.remove_server_bin() == NOTHING
    assert local._dir_size(local._MODEL_DIR) == 0


def test_all_is_removed_and_counted(local, folder):
    assert local._dir_size(folder) == local._dir_size(str(folder)) == 30
    assert local.remove_models() == {"removed": True, "freed_bytes": 30}
    assert os.listdir(folder.parent) == [f".{folder.name}.lock"]
    assert local.remove_models() == NOTHING


def test_only_the_asked_for_folder_goes(local, folder):
    local._BIN_DIR.mkdir(parents=True)
    assert local.remove_server_bin() == {"removed": True, "freed_bytes": 0}
    assert folder.is_dir()


def test_links_out_are_unlinked_and_their_targets_stay(local, folder, tmp_path):
    outside = tmp_path / "outside"
    (outside / "deep").mkdir(parents=True)
    (outside / "deep" / "keep").write_bytes(bytes(1000))
    (folder / "to-folder").symlink_to(outside)
    (folder / "sub" / "to-file").symlink_to(outside / "deep" / "keep")
    assert local._dir_size(folder) == 30
    assert local.remove_models() == {"removed": True, "freed_bytes": 30}
    assert (outside / "deep" / "keep").stat().st_size == 1000


def test_link_loops_end(local, folder):
    (folder / "loop").symlink_to(folder)
    (folder / "sub" / "up").symlink_to("..")
    (folder / "self").symlink_to("self")
    assert local._dir_size(folder) == 30
    assert local.remove_models() == {"removed": True, "freed_bytes": 30}
    assert not os.path.lexists(folder)


def test_a_folder_that_is_itself_a_link_loses_only_the_link(local, tmp_path):
    elsewhere = tmp_path / "big-disk"
    elsewhere.mkdir()
    (elsewhere / "model.gguf").write_bytes(bytes(50))
    local._MODEL_DIR.parent.mkdir(parents=True)
    local._MODEL_DIR.symlink_to(elsewhere)
    assert local._dir_size(local._MODEL_DIR) == 0
    assert local.remove_models() == {"removed": True, "freed_bytes": 0}
    assert (elsewhere / "model.gguf").exists()


def test_hard_links_count_once_and_only_when_the_last_goes(local, folder, tmp_path):
    os.link(folder / "a.gguf", folder / "twin")
    os.link(folder / "sub" / "b.gguf", tmp_path / "kept")
    assert local._dir_size(folder) == 30
    assert local.remove_models() == {"removed": True, "freed_bytes": 10}


def test_names_that_are_not_utf8(local, folder):
    name = os.fsencode(folder) + b"/\xff\xfe.gguf"
    with open(name, "wb") as stream:
        stream.write(bytes(5))
    assert local._dir_size(folder) == 35
    assert local.remove_models() == {"removed": True, "freed_bytes": 35}


def test_a_deep_folder(local, folder):
    here = os.open(folder, os.O_RDONLY)
    for _ in range(300):
        os.mkdir("d", dir_fd=here)
        below = os.open("d", os.O_RDONLY, dir_fd=here)
        os.close(here)
        here = below
    os.close(here)
    assert local._dir_size(folder) == 30
    assert local.remove_models() == {"removed": True, "freed_bytes": 30}
    assert not folder.exists()


@needs_root
def test_a_read_only_folder_is_reported_and_the_rest_is_gone(home, run):
    """As an ordinary user, whom the missing permission stops."""
    with tempfile.TemporaryDirectory() as outer:
        folder = Path(outer) / "vlm"
        (folder / "sub").mkdir(parents=True)
        (folder / "sub" / "b.gguf").write_bytes(bytes(20))
        (folder / "a.gguf").write_bytes(bytes(10))
        for path in (folder / "sub", folder, Path(outer)):
            path.chmod(0o555 if path.name == "sub" else 0o777)
        child = run(
            # An ordinary user may not be able to read the package: the first call loads all of it.
            "import os; from pathlib import Path; module.remove_models()\n"
            f"module._MODEL_DIR = Path({str(folder)!r}); os.setuid(65534)\n"
            "try: module.remove_models()\nexcept Exception as error: print(error)"
        )
        out, _ = child.communicate()
        assert f"could not remove {folder}/sub/b.gguf: Permission denied" in out
        assert f"(10 bytes under {folder} were freed)" in out
        assert sorted(p.name for p in folder.rglob("*")) == ["b.gguf", "sub"]


@needs_root
def test_another_disk_mounted_inside_is_not_entered(local, folder):
    inner = folder / "sub" / "disk"
    inner.mkdir()
    if subprocess.run(["mount", "-t", "tmpfs", "none", inner], check=False).returncode != 0:
        pytest.skip("mounting is not allowed here")
    try:
        (inner / "precious").write_bytes(bytes(7))
        with pytest.raises(MmcError, match=f"mounted at {inner}; unmount it first"):
            local.remove_models()
        assert (inner / "precious").exists()
        assert (folder / "a.gguf").exists()
    finally:
        subprocess.run(["umount", inner], check=True)


def test_a_folder_that_vanishes_half_way(local, folder, monkeypatch):
    """Somebody else deletes while we do: what is gone already is no error."""
    real, calls = os.scandir, []

    def scan(path):
        entries = real(path)
        if not calls:
            calls.append(path)
            subprocess.run(["/bin/rm", "-rf", folder / "sub"], check=True)
        return entries

    monkeypatch.setattr(removal.shutil.os, "scandir", scan)
    assert local.remove_models() == {"removed": True, "freed_bytes": 30}
    assert calls and not folder.exists()


def test_a_running_program_is_removed_under_itself(local):
    program = local._BIN_DIR / "llama-server"
    local._BIN_DIR.mkdir(parents=True)
    program.write_bytes(Path("/bin/sleep").read_bytes())
    program.chmod(0o755)
    size = program.stat().st_size
    child = subprocess.Popen([str(program), "60"])
    try:
        assert local.remove_server_bin() == {"removed": True, "freed_bytes": size}
        assert child.poll() is None
    finally:
        child.kill()
        child.wait()


def test_not_while_a_set_up_writes(local, folder, hub, models, run):
    from hub_server import Fault
    from processes import wait_until

    hub.faults = [Fault("stall", models["llm"]["sha256"], at=1_000_000)]
    child = run(f"module.ensure_models({hub.url!r})")
    wait_until(lambda: list(folder.glob(".partial/*")) or child.poll())
    with pytest.raises(MmcError, match="a set-up is writing to"):
        local.remove_models()
    assert (folder / "a.gguf").exists()
    child.kill()
    child.wait()
    assert local.remove_models()["removed"] is True
