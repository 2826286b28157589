"""Set-up and counter after a full disk, or a kill, at any of the calls that write."""

import datetime
import hashlib
import json
import os
import re
import shutil
from pathlib import Path

import pytest
from broken_disk import FULL, KILLED, faults, needs_strace
from release_archives import linux_build

pytestmark = [needs_strace, pytest.mark.parametrize("fault", [FULL, KILLED])]


def test_the_installed_llama_server_stays_until_the_new_one_is_whole(local, hub, tmp_path, fault):
    name = "llama-{}-bin-ubuntu-x64.tar.gz"
    hub.add_release("b1", {name.format("b1"): linux_build("b1")})
    local.download_server_bin("cpu")
    before = tmp_path / "before"
    shutil.copytree(local._BIN_DIR, before, symlinks=True)
    hub.add_release("b2", {name.format("b2"): linux_build("b2")})

    def prepare() -> None:
        shutil.rmtree(local._BIN_DIR)
        shutil.copytree(before, local._BIN_DIR, symlinks=True)

    code = f"""
from pathlib import Path
from zelvoran_anpr import zelvoran_anpr_mmc_local as module
module._BIN_DIR = Path({str(local._BIN_DIR)!r})
module.download_server_bin("cpu")
"""
    seen = set()
    for errors in faults(code, fault, tmp_path, prepare):
        path = Path(local.find_server_bin())
        seen.add(path.read_text().splitlines()[1])
        assert {p.name for p in path.parent.iterdir()} >= {"libllama.so", "LICENSE"}
        if errors:  # a full disk may stop the new executable itself
            assert re.search("MmcError: .*(disk is full|No space left)", errors.splitlines()[-1])
    assert seen == {"# b1", "# b2"}
    assert "b2-cpu" in local.download_server_bin("cpu")["path"]


def test_a_model_file_in_its_place_is_whole(local, hub, tmp_path, fault):
    content = os.urandom(300_000)
    entry = hub.add_model("a/b", "tiny.gguf", content)
    folder = tmp_path / "models"
    code = f"""
from pathlib import Path
from zelvoran_anpr.mmc.fetch.disk import disk_errors
from zelvoran_anpr.mmc.fetch.download import Remote, fetch
from zelvoran_anpr.mmc.install.model_files import ModelFile
from zelvoran_anpr.mmc.install.model_store import ModelStore
store, file = ModelStore(Path({str(folder)!r})), ModelFile(**{entry!r})
with disk_errors("storing the model"):
    fetch(Remote("{hub.url}/storage/{entry["sha256"]}", file.file, file.size, file.sha256),
          store.part(file))
    store.adopt(file)
"""
    missing = 0
    for errors in faults(code, fault, tmp_path, lambda: shutil.rmtree(folder, True)):
        model = folder / "tiny.gguf"
        missing += not model.exists()
        if model.exists():
            assert hashlib.sha256(model.read_bytes()).hexdigest() == entry["sha256"]
        if (folder / ".verified.json").exists():
            assert "tiny.gguf" in json.loads((folder / ".verified.json").read_text())
        if errors:
            assert "the disk is full while " in errors.splitlines()[-1]
    assert missing >= 3


def test_the_counter_never_forgets_the_calls_before(tmp_path, fault):
    from zelvoran_anpr.mmc.serve.usage import FILE_NAME, DailyCounter

    today = datetime.date.today().isoformat()

    def prepare() -> None:
        (tmp_path / FILE_NAME).write_text(json.dumps({"date": today, "calls": {"cloud": 7}}))

    code = f"""
from pathlib import Path
from zelvoran_anpr.mmc.serve.usage import DailyCounter
counter = DailyCounter("cloud", Path({str(tmp_path)!r}), 100)
counter.take()
assert counter.calls() == 8
"""
    calls = set()
    for errors in faults(code, fault, tmp_path, prepare):
        calls.add(DailyCounter("cloud", tmp_path).calls())
        assert errors == ""  # a full disk stops no recognition
    assert 7 in calls and calls <= {7, 8}
