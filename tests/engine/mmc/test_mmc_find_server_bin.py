"""find_server_bin and _server_bin_runs: argument, environment, our own, PATH, bare name."""

import json
from pathlib import Path

import pytest
from release_archives import executable


def place(path: Path, status: int = 0) -> str:
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(executable(status=status))
    path.chmod(0o755)
    return str(path)


@pytest.fixture
def four(local, tmp_path, monkeypatch):
    """One executable in each place; the argument's path comes back with the rest."""
    given = place(tmp_path / "given" / "my-llama")
    named = place(tmp_path / "named" / "llama-server")
    ours = place(local._BIN_DIR / "releases" / "b1-cpu" / "llama-server")
    record = {"tag": "b1", "variant": "cpu", "path": "releases/b1-cpu/llama-server"}
    (local._BIN_DIR / "current.json").write_text(json.dumps(record))
    on_path = place(tmp_path / "bin" / "llama-server")
    monkeypatch.setenv("ZELVORAN_LLAMA_SERVER", named)
    monkeypatch.setenv("PATH", str(tmp_path / "bin"))
    return given, named, ours, on_path


def test_the_order(local, four, monkeypatch):
    given, named, ours, on_path = four
    assert local.find_server_bin(given) == given
    assert local.find_server_bin(None) == named
    monkeypatch.delenv("ZELVORAN_LLAMA_SERVER")
    assert local.find_server_bin(None) == ours
    Path(ours).unlink()
    assert local.find_server_bin(None) == on_path
    Path(on_path).unlink()
    assert local.find_server_bin(None) == "llama-server"


def test_a_folder_stands_for_the_executable_in_it(local, four):
    assert local.find_server_bin(str(Path(four[1]).parent)) == four[1]


def test_what_cannot_be_run_is_passed_over_with_a_hint(local, four, capsys):
    Path(four[0]).chmod(0o644)
    assert local.find_server_bin(four[0]) == four[1]
    assert f"--server-bin: {four[0]} is not an executable file" in capsys.readouterr().err


def test_runs(local, tmp_path):
    assert local._server_bin_runs(place(tmp_path / "good"))
    assert not local._server_bin_runs(place(tmp_path / "bad", status=1))
    assert not local._server_bin_runs(str(tmp_path / "absent"))
    (tmp_path / "text").write_text("no program")
    (tmp_path / "text").chmod(0o755)
    assert not local._server_bin_runs(str(tmp_path / "text"))


def test_the_users_own_executable_is_enough(local, hub, four):
    info = local.download_server_bin()
    assert (info["variant"], info["path"]) == ("own", four[1])
    assert "ZELVORAN_LLAMA_SERVER" in info["note"]
    assert hub.seen == []


def test_one_on_path_is_enough_where_anything_is_welcome(local, hub, four, monkeypatch):
    monkeypatch.delenv("ZELVORAN_LLAMA_SERVER")
    local.remove_server_bin()
    info = local.download_server_bin()
    assert (info["variant"], info["path"]) == ("system", four[3])
    assert hub.seen == []
