"""Scripted modules behind the mmc commands; every call into them is recorded."""

import sys
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[3]
sys.path.append(str(ROOT / "tests" / "engine" / "mmc"))

LOCAL = """
from pathlib import Path
from zelvoran_anpr._record import record
import zelvoran_anpr._local as script

_BIN_DIR = Path(script.BIN_DIR)
_MODEL_DIR = Path(script.MODEL_DIR)


def recorded(name, function):
    def operation(*args, **keywords):
        record(name, [str(a) if isinstance(a, Path) else a for a in args], keywords)
        return function(*args, **keywords)
    return operation


for name in ("ensure_models find_server_bin _server_bin_runs download_server_bin "
             "_dir_size remove_server_bin remove_models").split():
    if hasattr(script, name):
        globals()[name] = recorded(name, getattr(script, name))
"""
WORKING = """
def ensure_models(hf_endpoint=None, allow_download=True):
    return {"llm": Path("/models/llm.gguf"), "mmproj": "/models/mmproj.gguf"}

def find_server_bin(path=None):
    return path or "llama-server"

def _server_bin_runs(path):
    return path == "/opt/llama/llama-server"

def download_server_bin(variant="auto", tag=None):
    return {"variant": "vulkan", "path": Path("/bin/llama-server"), "note": ""}

def _dir_size(path):
    return 1048575 if path == Path(BIN_DIR) else 1536

def remove_server_bin():
    return {"removed": True, "freed_bytes": 1048575}

def remove_models():
    return {"removed": True, "freed_bytes": 5 * 1024 ** 4}
"""


class LocalModule:
    """The module's two folders, made on request, and what its operations do."""

    def __init__(self, zv) -> None:
        self.zv = zv
        self.bin = zv.folder / "llama"
        self.model = zv.folder / "vlm"
        self.file = zv.engine_folder / "zelvoran_anpr" / "zelvoran_anpr_mmc_local.py"
        self.file.write_text(LOCAL)
        self.script("")

    def script(self, changes: str) -> None:
        folders = f"BIN_DIR, MODEL_DIR = {str(self.bin)!r}, {str(self.model)!r}\n"
        self.zv.engine_file("_local.py", f"from pathlib import Path\n{folders}{WORKING}\n{changes}")

    def installer(self, text: str) -> None:
        """Takes the place of the interpreter's own; it sees its arguments in sys.argv."""
        folder = self.zv.engine_folder / "pip"
        folder.mkdir()
        (folder / "__init__.py").write_text("")
        record = "from zelvoran_anpr._record import record\nimport sys\n"
        (folder / "__main__.py").write_text(f"{record}record('pip', sys.argv[1:], {{}})\n{text}")

    def module(self, name: str, text: str) -> None:
        (self.zv.engine_folder / f"{name}.py").write_text(text)

    def calls(self, *names: str) -> list:
        """The names of the calls made, or the arguments of those asked for."""
        calls = self.zv.calls()
        return [call for call in calls if call[0] in names] if names else [c[0] for c in calls]


@pytest.fixture
def local(zv) -> LocalModule:
    return LocalModule(zv)


@pytest.fixture
def ready(local):
    """The hub's client is there, and any use of the installer would be seen."""
    local.module("huggingface_hub", "")
    local.installer("sys.exit(9)")
    return local
