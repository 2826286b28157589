"""Fixtures: a hub on loopback, a HOME of the test's own, and runs of the module as a process."""

import importlib.util
import json
import os
import random
import signal
import subprocess
import sys
from collections.abc import Callable, Iterator
from pathlib import Path

import pytest

sys.path.insert(0, str(Path(__file__).parent))

# The installed package, or the source tree beside these tests where none is installed.
if importlib.util.find_spec("zelvoran_anpr") is None:
    sys.path.insert(0, str(Path(__file__).parents[3] / "engine"))

import zelvoran_anpr
from hub_server import REPO, Hub
from release_archives import executable

ENGINE = Path(zelvoran_anpr.__file__).parents[1]
_CLEARED = ("ZELVORAN_", "HF_", "LLAMA_", "http_proxy", "https_proxy", "HTTP_PROXY", "HTTPS_PROXY")


@pytest.fixture
def home(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> Path:
    """A HOME of our own, with no variable of the developer's that could reach the code."""
    for name in list(os.environ):
        if name.startswith(_CLEARED):
            monkeypatch.delenv(name)
    folder = tmp_path / "home"
    folder.mkdir()
    monkeypatch.setenv("HOME", str(folder))
    monkeypatch.setenv("HF_HOME", str(tmp_path / "hf"))
    monkeypatch.setenv("PYTHONPATH", str(ENGINE))
    return folder


@pytest.fixture
def local(home: Path, monkeypatch: pytest.MonkeyPatch):
    """The module under test, with its two folders below `home`."""
    from zelvoran_anpr import zelvoran_anpr_mmc_local as module
    from zelvoran_anpr.mmc.fetch import download

    monkeypatch.setattr(module, "_BIN_DIR", home / ".zelvoran" / "llama-server")
    monkeypatch.setattr(module, "_MODEL_DIR", home / ".zelvoran" / "models" / "vlm")
    monkeypatch.setattr(download, "RETRY_DELAYS", (0.01, 0.01, 0.01))
    return module


@pytest.fixture
def hub(home: Path, monkeypatch: pytest.MonkeyPatch) -> Iterator[Hub]:
    with Hub() as server:
        monkeypatch.setenv(
            "ZELVORAN_LLAMA_RELEASES", server.url + "/repos/ggml-org/llama.cpp/releases"
        )
        yield server


@pytest.fixture
def models(hub: Hub, tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> dict:
    """Two small model files on the hub, and the manifest that names them."""
    noise = random.Random(7)
    manifest = {
        "repo": REPO,
        "revision": "main",
        "llm": hub.add_model(REPO, "tiny.gguf", b"GGUF" + noise.randbytes(3_000_000)),
        "mmproj": hub.add_model(REPO, "mmproj-tiny.gguf", b"GGUF" + noise.randbytes(500_000)),
    }
    path = tmp_path / "manifest.json"
    path.write_text(json.dumps(manifest))
    monkeypatch.setenv("ZELVORAN_MMC_MODEL_MANIFEST", str(path))
    return manifest


@pytest.fixture
def run(home: Path) -> Iterator[Callable[..., subprocess.Popen[str]]]:
    """Start `code` in a Python of its own, with `module` imported; all are ended afterwards."""
    started: list[subprocess.Popen[str]] = []

    def start(code: str, **options) -> subprocess.Popen[str]:
        text = f"from zelvoran_anpr import zelvoran_anpr_mmc_local as module\n{code}"
        pipe = subprocess.PIPE
        child = subprocess.Popen(
            [sys.executable, "-c", text], stdout=pipe, stderr=pipe, text=True, **options
        )
        started.append(child)
        return child

    yield start
    for child in started:
        if child.poll() is None:
            child.send_signal(signal.SIGKILL)
        child.communicate()


@pytest.fixture
def steer(monkeypatch):
    """Set how the process behaves from its next start on."""
    return lambda **how: monkeypatch.setenv("LLAMA_DOUBLE", json.dumps(how))


@pytest.fixture
def local_config(home, tmp_path) -> dict:
    binary = tmp_path / "llama-server"
    binary.write_bytes(executable())
    binary.chmod(0o755)
    for name in ("llm", "mmproj"):
        (tmp_path / name).write_bytes(b"GGUF")
    local = {"server_bin": str(binary)} | {n: str(tmp_path / n) for n in ("llm", "mmproj")}
    return {"backend": "local", "local": {**local, "start_timeout": 20, "request_timeout": 10}}


@pytest.fixture
def make_local(local_config, tmp_path, monkeypatch):
    """Build the backend; every one that was built is stopped afterwards."""
    from zelvoran_anpr.mmc import create_backend
    from zelvoran_anpr.mmc.serve import supervisor

    monkeypatch.setattr(supervisor, "_FIRST_BACKOFF", 0.05)
    built = []

    def build(**local):
        merged = {**local_config, "local": {**local_config["local"], **local}}
        backend = create_backend(merged, tmp_path / "data")
        built.append(backend)
        return backend

    yield build
    for backend in built:
        backend.stop()


@pytest.fixture
def machine(monkeypatch):
    """A Linux PC without accelerators and with an empty PATH; tests switch drivers on."""
    from zelvoran_anpr.mmc.install import accelerators

    state = {"platform": ("ubuntu", "x64"), "cuda": None, "vulkan": False}
    monkeypatch.setattr(accelerators, "release_platform", lambda: state["platform"])
    monkeypatch.setattr(accelerators, "cuda_driver_version", lambda: state["cuda"])
    monkeypatch.setattr(accelerators, "vulkan_loader", lambda: state["vulkan"])
    monkeypatch.setenv("PATH", "/nonexistent")
    return state
