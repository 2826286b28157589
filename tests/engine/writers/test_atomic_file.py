"""The one writer of files: old or new content, whatever happens, with the file's mode and owner."""

import os
import stat

import pytest
from broken_disk import FULL, KILLED, faults, needs_strace
from zelvoran_anpr.atomic_file import write_atomic

OLD, NEW = b"old\n" * 5000, b"new\n" * 50_000
WRITE = """
from pathlib import Path
from zelvoran_anpr.atomic_file import write_atomic
write_atomic(Path("file"), b"new\\n" * 50_000)
"""


@needs_strace
@pytest.mark.parametrize("fault", [FULL, KILLED])
def test_a_fault_at_any_call_leaves_the_old_or_the_new_content(tmp_path, fault):
    file = tmp_path / "file"
    seen = []
    for errors in faults(WRITE, fault, tmp_path, lambda: file.write_bytes(OLD)):
        seen.append(file.read_bytes())
        assert seen[-1] in (OLD, NEW)
        if fault == FULL and seen[-1] == OLD:
            assert "No space left on device" in errors
            assert {entry.name for entry in tmp_path.iterdir()} == {"file", "strace.log"}
    assert seen.count(OLD) >= 3


def test_a_file_keeps_its_mode(tmp_path):
    (tmp_path / "file").write_bytes(OLD)
    (tmp_path / "file").chmod(0o640)
    write_atomic(tmp_path / "file", NEW)
    assert stat.S_IMODE((tmp_path / "file").stat().st_mode) == 0o640
    assert (tmp_path / "file").read_bytes() == NEW


def test_a_mode_that_is_asked_for_counts_more(tmp_path):
    (tmp_path / "file").write_bytes(OLD)
    write_atomic(tmp_path / "file", NEW, 0o600)
    assert stat.S_IMODE((tmp_path / "file").stat().st_mode) == 0o600


def test_a_new_file_is_for_its_user_only(tmp_path):
    write_atomic(tmp_path / "file", NEW)
    assert stat.S_IMODE((tmp_path / "file").stat().st_mode) == 0o600


@pytest.mark.skipif(os.name == "nt" or os.geteuid() != 0, reason="only root can give files away")
def test_what_root_changes_stays_its_users(tmp_path):
    (tmp_path / "file").write_bytes(OLD)
    os.chown(tmp_path / "file", 1234, 5678)
    write_atomic(tmp_path / "file", NEW)
    found = (tmp_path / "file").stat()
    assert (found.st_uid, found.st_gid) == (1234, 5678)


def test_a_link_keeps_pointing_to_its_target(tmp_path):
    (tmp_path / "target").write_bytes(OLD)
    (tmp_path / "file").symlink_to("target")
    write_atomic(tmp_path / "file", NEW)
    assert (tmp_path / "file").is_symlink()
    assert (tmp_path / "target").read_bytes() == NEW
