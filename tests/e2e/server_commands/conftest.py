"""The executable with scripted server modules in its engine, and a scripted server to talk to."""

import sys
from pathlib import Path

import pytest

sys.path.insert(0, str(Path(__file__).parent))

from engine_modules import CONFIG, DAEMON, SCRIPT
from scripted_server import ScriptedServer


@pytest.fixture
def zv(zv):
    zv.engine_file("zelvoran_anpr_server_daemon.py", DAEMON)
    zv.engine_file("zelvoran_anpr_server_config.py", CONFIG)
    zv.engine_file("_server_script.py", SCRIPT)
    zv.server_script = lambda text: zv.engine_file("_server_script.py", SCRIPT + text)
    return zv


@pytest.fixture
def server():
    with ScriptedServer() as running:
        yield running


@pytest.fixture
def ask(zv, server):
    """Runs `server NAME ...` against the scripted server; what it prints, ending well."""

    def ask(*words):
        result = zv("server", *words, "--port", str(server.port))
        assert (result.status, result.err) == (0, "")
        return result.out

    return ask
