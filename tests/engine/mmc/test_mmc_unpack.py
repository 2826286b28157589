"""Unpacking: links within the archive live, nothing lands or points outside of the target."""

import io
import os
import tarfile
import zipfile

import pytest
from release_archives import linux_build, tar_member, tar_of, windows_build
from zelvoran_anpr.mmc import MmcError
from zelvoran_anpr.mmc.install import unpack as unpacking
from zelvoran_anpr.mmc.install.unpack import unpack


@pytest.fixture(params=["filter", "old Python"], autouse=True)
def python(request, monkeypatch):
    """Early patch levels of 3.10 and 3.11 unpack without the standard library's filter."""
    if request.param == "old Python":
        monkeypatch.setattr(unpacking, "_FILTER", {})


def unpacked(tmp_path, content: bytes, name: str = "a.tar.gz"):
    archive, target = tmp_path / name, tmp_path / "outer" / "target"
    archive.write_bytes(content)
    target.mkdir(parents=True)
    unpack(archive, target)
    return target


def names(folder) -> list[str]:
    return sorted(p.relative_to(folder).as_posix() for p in folder.rglob("*"))


def test_a_linux_build_keeps_its_inner_links_and_modes(tmp_path):
    home = unpacked(tmp_path, linux_build("b1")) / "llama-b1"
    assert os.readlink(home / "libllama.so") == "libllama.so.0"
    assert (home / "libllama.so").read_bytes() == b"\x7fELF"
    assert (home / "llama-server").stat().st_mode & 0o7777 == 0o755
    assert (home / "LICENSE").stat().st_mode & 0o7777 == 0o644


def test_a_windows_build(tmp_path):
    target = unpacked(tmp_path, windows_build("b1"), "a.zip")
    assert names(target) == ["ggml.dll", "llama-server.exe"]


def test_hard_links_become_files_of_their_own(tmp_path):
    twin = tar_member("b", kind=tarfile.LNKTYPE, linkname="a")
    target = unpacked(tmp_path, tar_of(twin, tar_member("a", b"same")))
    assert (target / "b").read_bytes() == b"same"


def test_no_set_user_bit_survives(tmp_path):
    target = unpacked(tmp_path, tar_of(tar_member("tool", b"x", mode=0o6777)))
    assert (target / "tool").stat().st_mode & 0o7777 == 0o755


UNSAFE = {
    "parent": [tar_member("../evil", b"x")],
    "deep parent": [tar_member("a/../../evil", b"x")],
    "absolute": [tar_member("/tmp/zelvoran-evil", b"x")],
    "backslash": [tar_member("..\\evil", b"x")],
    "drive": [tar_member("C:evil", b"x")],
    "link to parent": [tar_member("l", kind=tarfile.SYMTYPE, linkname="..")],
    "link to root": [tar_member("l", kind=tarfile.SYMTYPE, linkname="/etc/passwd")],
    "hard link out": [tar_member("l", kind=tarfile.LNKTYPE, linkname="../../secret")],
    "through a link": [
        tar_member("d", kind=tarfile.SYMTYPE, linkname=".."),
        tar_member("d/evil", b"x"),
    ],
    "link over links": [
        tar_member("a/b/c/x", b""),
        tar_member("a/up", kind=tarfile.SYMTYPE, linkname="b/c"),
        tar_member("out", kind=tarfile.SYMTYPE, linkname="a/up/../../../.."),
    ],
}


@pytest.mark.parametrize("members", UNSAFE.values(), ids=UNSAFE)
def test_what_leads_out_is_refused(tmp_path, members):
    (tmp_path / "secret").write_text("s")
    with pytest.raises(MmcError, match="is unsafe"):
        unpacked(tmp_path, tar_of(*members))
    assert names(tmp_path / "outer") == [
        n for n in names(tmp_path / "outer") if n.startswith("target")
    ]
    assert not os.path.exists("/tmp/zelvoran-evil")


def test_a_chain_of_links_that_ends_outside_is_refused(tmp_path):
    # Each link stays inside by its text; the second leaves through the first.
    members = [
        tar_member("a/b/c/top", kind=tarfile.SYMTYPE, linkname="../../.."),
        tar_member("a/b/c/out", kind=tarfile.SYMTYPE, linkname="top/../../secret"),
    ]
    with pytest.raises(MmcError, match="is unsafe"):
        unpacked(tmp_path, tar_of(*members))


@pytest.mark.parametrize("kind", [tarfile.CHRTYPE, tarfile.BLKTYPE, tarfile.FIFOTYPE])
def test_devices_and_pipes_are_refused(tmp_path, kind):
    with pytest.raises(MmcError, match="neither a file nor a folder nor a link"):
        unpacked(tmp_path, tar_of(tar_member("null", kind=kind, devmajor=1, devminor=3)))
    assert names(tmp_path / "outer") == ["target"]


def test_a_zip_with_a_link_out_is_refused(tmp_path):
    out = io.BytesIO()
    with zipfile.ZipFile(out, "w") as archive:
        info = zipfile.ZipInfo("l")
        info.external_attr = 0o120777 << 16
        archive.writestr(info, "../../etc")
    with pytest.raises(MmcError, match="is unsafe"):
        unpacked(tmp_path, out.getvalue(), "a.zip")


@pytest.mark.parametrize("cut", [0, 1, 100, -100])
def test_a_broken_archive_is_named(tmp_path, cut):
    content = linux_build("b1", padding=os.urandom(4096))[:cut]
    with pytest.raises(MmcError, match="a.tar.gz is not a readable archive"):
        unpacked(tmp_path, content)


def test_more_than_a_release_can_hold_is_refused(tmp_path, monkeypatch):
    monkeypatch.setattr(unpacking, "_MAX_BYTES", 1000)
    with pytest.raises(MmcError, match="more than a release can hold"):
        unpacked(tmp_path, tar_of(tar_member("big", bytes(2000))))
    assert names(tmp_path / "outer") == ["target"]


def test_a_zip_with_inner_links_and_modes(tmp_path):
    out = io.BytesIO()
    with zipfile.ZipFile(out, "w") as archive:
        for name, mode, content in (
            ("bin/llama-server", 0o100775, b"x"), ("bin/libllama.so", 0o120777, b"libllama.so.0"),
            ("bin/libllama.so.0", 0o100644, b"lib"),
        ):  # fmt: skip
            info = zipfile.ZipInfo(name)
            info.external_attr = mode << 16
            archive.writestr(info, content)
    home = unpacked(tmp_path, out.getvalue(), "a.zip") / "bin"
    assert (home / "libllama.so").read_bytes() == b"lib"
    assert (home / "llama-server").stat().st_mode & 0o7777 == 0o755
    assert (home / "libllama.so.0").stat().st_mode & 0o7777 == 0o644


def test_a_zip_that_leads_out_is_refused(tmp_path):
    out = io.BytesIO()
    with zipfile.ZipFile(out, "w") as archive:
        archive.writestr("../evil", "x")
    with pytest.raises(MmcError, match="is unsafe"):
        unpacked(tmp_path, out.getvalue(), "a.zip")
