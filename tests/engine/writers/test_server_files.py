"""The server's own files after a full disk, or a kill, at any of the calls that write them."""

import json
import shutil

import pytest
from broken_disk import FULL, KILLED, faults, needs_strace
from zelvoran_anpr.server.daemon.records import running_instances
from zelvoran_anpr.zelvoran_anpr_server_config import (
    ensure_api_token,
    load_config,
    local_api_token,
)

pytestmark = [needs_strace, pytest.mark.parametrize("fault", [FULL, KILLED])]
MODULE = "from zelvoran_anpr import zelvoran_anpr_server_config as config\n"


@pytest.fixture(autouse=True)
def folder(tmp_path, monkeypatch):
    monkeypatch.setenv("ZELVORAN_CONFIG_DIR", str(tmp_path / "zv"))
    return tmp_path / "zv"


def test_the_configuration(folder, tmp_path, fault):
    def prepare() -> None:
        folder.mkdir(exist_ok=True)
        (folder / "server_config.yaml").write_text("server:\n  port: 8001 # mine\n")

    code = MODULE + "config.save_config({'server': {'port': 8002}})"
    ports = []
    for errors in faults(code, fault, tmp_path, prepare):
        ports.append(load_config()["server"]["port"])
        assert "# mine" in (folder / "server_config.yaml").read_text()
        assert fault == KILLED or ports[-1] == 8002 or "No space left" in errors
    assert set(ports) <= {8001, 8002} and 8001 in ports


def test_a_first_configuration(folder, tmp_path, fault):
    def prepare() -> None:
        (folder / "server_config.yaml").unlink(missing_ok=True)

    code = MODULE + "config.save_config({'server': {'port': 8002}})"
    ports = []
    for _ in faults(code, fault, tmp_path, prepare):
        ports.append(load_config()["server"]["port"])
    assert set(ports) <= {8000, 8002} and 8000 in ports


def test_a_rotated_token(folder, tmp_path, fault):
    old = "o" * 43

    def prepare() -> None:
        folder.mkdir(exist_ok=True)
        (folder / "api_token").write_text(old)

    kept = 0
    for _ in faults(MODULE + "config.ensure_api_token(True)", fault, tmp_path, prepare):
        token = local_api_token()
        assert token and len(token) == 43
        kept += token == old
    assert kept >= 3


def test_a_first_token(folder, tmp_path, fault):
    def prepare() -> None:
        (folder / "api_token").unlink(missing_ok=True)

    for _ in faults(MODULE + "config.ensure_api_token()", fault, tmp_path, prepare):
        assert local_api_token() is None or len(local_api_token()) == 43
    assert ensure_api_token() == local_api_token()  # no lock was left behind


def test_the_record_of_a_server(folder, tmp_path, fault):
    code = """
from zelvoran_anpr.server.config.settings import load_settings
from zelvoran_anpr.server.daemon.records import READY, OwnRecord
OwnRecord(load_settings(None, {}), "1.0.0", True, "").write(READY)
"""
    for _ in faults(code, fault, tmp_path, lambda: shutil.rmtree(folder, ignore_errors=True)):
        for record in (folder / "run").glob("server-*.json"):
            assert json.loads(record.read_text())["port"] == 8000
        assert running_instances() == []
