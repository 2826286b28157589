"""Changing the backend of a running server's recogniser: nothing under way is lost."""

import json
import socket
import threading

import numpy as np
import pytest
from processes import wait_until
from release_archives import executable

pytest.importorskip("ruamel.yaml", reason="needs the server's dependencies")

from zelvoran_anpr.server.config.settings import load_settings
from zelvoran_anpr.server.web.mmc_switch import MmcSwitch, MmcUnavailable

VEHICLE = np.full((400, 600, 3), (250, 0, 0), dtype=np.uint8)


@pytest.fixture
def settings(home, tmp_path, monkeypatch):
    """Write `mmc.local` with two different servers' worth of settings; JSON is YAML too."""
    binary = tmp_path / "llama-server"
    binary.write_bytes(executable())
    binary.chmod(0o755)
    for name in ("llm", "mmproj"):
        (tmp_path / name).write_bytes(b"GGUF")
    folder = tmp_path / "config"
    folder.mkdir()
    monkeypatch.setenv("ZELVORAN_CONFIG_DIR", str(folder))

    def write(**local) -> None:
        section = {"server_bin": str(binary), "llm": str(tmp_path / "llm"), **local}
        section["mmproj"] = str(tmp_path / "mmproj")
        mmc = {"enabled": True, "backend": "local", "local": section}
        (folder / "server_config.yaml").write_text(json.dumps({"mmc": mmc}))

    write()
    return write


@pytest.fixture
def switch(settings):
    made = MmcSwitch(load_settings(None, {}))
    yield made
    made.stop()


def test_requests_go_on_while_the_backend_changes(switch, settings, monkeypatch):
    monkeypatch.setenv("LLAMA_DOUBLE", json.dumps({"slow": 0.05}))
    assert switch.change("local").result() is None
    done, failed, ending = [], [], threading.Event()

    def ask() -> None:
        while not ending.is_set():
            try:
                done.append(switch.recognise(VEHICLE)["make"])
            except MmcUnavailable as error:
                failed.append(str(error))

    threads = [threading.Thread(target=ask) for _ in range(4)]
    for thread in threads:
        thread.start()
    for threads_setting in (1, 2, 3):
        before = len(done)
        settings(threads=threads_setting)
        assert switch.change("local").result() is None
        wait_until(lambda before=before: len(done) > before + 4)
    ending.set()
    for thread in threads:
        thread.join()
    assert failed == [] and set(done) == {"Double"}


def test_a_backend_that_does_not_come_up_leaves_the_one_before(switch, settings, monkeypatch):
    assert switch.change("local").result() is None
    monkeypatch.setenv("LLAMA_DOUBLE", json.dumps({"fail": "error: out of memory"}))
    settings(threads=9)
    assert "out of memory" in switch.change("local").result()
    assert "not configured" in switch.change("cloud").result()
    assert switch.name == "local" and switch.available
    assert switch.recognise(VEHICLE)["color"] == "red"


def test_a_request_that_met_the_change_is_answered_by_the_new_backend(switch, settings):
    assert switch.change("local").result() is None
    old = switch._backend
    ask = old.recognise

    def change_first(vehicle):
        """The moment between choosing a backend and asking it."""
        settings(threads=2)
        assert switch.change("local").result() is None
        return ask(vehicle)

    old.recognise = change_first
    assert switch.recognise(VEHICLE)["color"] == "red"
    assert switch._backend is not old


def test_no_folder_of_this_machine_is_told(switch, settings, tmp_path):
    settings(llm=str(tmp_path / "no" / "model.gguf"), server_bin=None)
    problem = switch.change("local").result()
    assert problem and str(tmp_path) not in problem
    assert switch.status()["error"] == problem


def test_a_change_that_waits_for_ever_holds_up_neither_others_nor_the_end(
    home, tmp_path, monkeypatch
):
    monkeypatch.setenv("ZELVORAN_CONFIG_DIR", str(tmp_path))
    with socket.create_server(("127.0.0.1", 0)) as silent:
        cloud = {"url": f"http://127.0.0.1:{silent.getsockname()[1]}/", "timeout": 3600}
        (tmp_path / "server_config.yaml").write_text(json.dumps({"mmc": {"cloud": cloud}}))
        switch = MmcSwitch(load_settings(None, {}))
        changes = [switch.change("cloud") for _ in range(12)]
        refused = "The MMC backend is being changed already; try again in a moment"
        assert [change.result() for change in changes[2:]] == [refused] * 10
        switch.stop()
        assert not switch.available
