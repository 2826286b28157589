"""The engine's server modules as tests need them: they write down every call and answer as told."""

DAEMON = """
from zelvoran_anpr._record import record
import zelvoran_anpr._server_script as script

OPERATIONS = (
    "start_server", "stop_server", "restart_server", "upgrade_server", "get_status",
    "get_installed_version", "get_running_version", "find_all_servers",
)


def operation(name, default):
    def call(*args, **keywords):
        record(name, args, keywords)
        return getattr(script, name, default)(*args, **keywords)

    return call


for _name in OPERATIONS:
    globals()[_name] = operation(_name, lambda *args, **keywords: None)


def _print_server_table(servers):
    record("_print_server_table", [[type(server).__name__ for server in servers]], {})
    script.print_table(servers)
"""

CONFIG = """
from pathlib import Path

from zelvoran_anpr._record import record
import zelvoran_anpr._server_script as script


def get_config_dir():
    return Path(script.config_dir)


def load_config():
    record("load_config", (), {})
    return script.config


def ensure_api_token(**keywords):
    record("ensure_api_token", (), keywords)
    return "the-token"


def local_api_token():
    record("local_api_token", (), {})
    return script.local_api_token()
"""

SCRIPT = """
import os

config_dir = os.environ["HOME"] + "/.zelvoran"
config = {}


def local_api_token():
    return None


def get_installed_version():
    return "3.2.1"
"""
