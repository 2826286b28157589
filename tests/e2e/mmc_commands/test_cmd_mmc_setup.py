"""mmc-setup: what it asks of the local-MMC module, in which order, and what it reports."""

import json
import sys
from pathlib import Path

import pytest

ENGINE = Path(__file__).resolve().parents[3] / "engine"

HEAD = f"\nZelvoran ANPR — Local MMC Setup (on-device VLM)\n{'=' * 50}\n"
THERE = "\n📦 huggingface_hub already installed.\n"
DOWNLOADING = (
    "\n⬇️  Downloading Qwen3-VL-2B GGUF model (~1.5 GB, cached in ~/.zelvoran/models/vlm)...\n"
)
MODELS = "   ✓ LLM    : /models/llm.gguf\n   ✓ mmproj : /models/mmproj.gguf\n"
SERVER = "\n🔎 Setting up llama.cpp `llama-server` binary...\n"
READY = (
    "\n✅ Local MMC ready. Switch backend with:\n   zv-anpr mmc-backend local\n"
    "\n   To remove later: zv-anpr mmc-uninstall [--all]\n"
)
NOT_READY = (
    "\n⚠️  Model is ready but llama-server is not — install it (above), then:\n"
    "   zv-anpr mmc-backend local\n\n   To remove later: zv-anpr mmc-uninstall [--all]\n"
)
MANUAL = """
   Manual install:
     • prebuilt: https://github.com/ggml-org/llama.cpp/releases
     • or build: cmake -B build -DGGML_CUDA=ON && cmake --build build -j
     Then:  export ZELVORAN_LLAMA_SERVER=/path/to/llama-server
"""
BEFORE_SERVER = HEAD + THERE + DOWNLOADING + MODELS + SERVER


@pytest.fixture
def ready(local):
    """The hub's client is there, and any use of the installer would be seen."""
    local.module("huggingface_hub", "")
    local.installer("sys.exit(9)")
    return local


def test_all_is_well(ready):
    assert tuple(ready.zv("mmc-setup")) == (
        0,
        BEFORE_SERVER + "   ✓ llama-server ready (vulkan): /bin/llama-server\n" + READY,
        "",
    )
    assert ready.zv.calls() == [
        ["ensure_models", [], {"hf_endpoint": None, "allow_download": True}],
        ["download_server_bin", [], {"variant": "auto", "tag": None}],
    ]


def test_the_options_reach_the_module(ready):
    options = "--hf-endpoint http://mirror --no-download --llama-variant cuda --llama-tag b10068"
    ready.zv("mmc-setup", *options.split(), "--server-bin", "/not/used")
    assert ready.zv.calls() == [
        ["ensure_models", [], {"hf_endpoint": "http://mirror", "allow_download": False}],
        ["download_server_bin", [], {"variant": "cuda", "tag": "b10068"}],
    ]


def test_the_heading_of_the_download_comes_without_one_too(ready):
    assert DOWNLOADING in ready.zv("mmc-setup", "--no-download").out


def test_a_note_is_shown(ready):
    ready.script(
        "def download_server_bin(variant, tag):\n"
        "    return {'variant': 'cpu', 'path': 'p', 'note': 'kept the old one'}"
    )
    assert ready.zv("mmc-setup").out == (
        BEFORE_SERVER + "   ✓ llama-server ready (cpu): p\n     note: kept the old one\n" + READY
    )


def test_a_note_that_cannot_be_shown_leaves_no_half_line(ready):
    ready.script(
        "class Note:\n    def __str__(self):\n        raise ValueError('no text')\n"
        "def download_server_bin(variant, tag):\n"
        "    return {'variant': 'cpu', 'path': 'p', 'note': Note()}"
    )
    assert ready.zv("mmc-setup").out == (
        BEFORE_SERVER
        + "   ✓ llama-server ready (cpu): p\n   ✗ auto-install failed: no text\n"
        + MANUAL
        + NOT_READY
    )


@pytest.mark.parametrize("extra", ["", ", 'note': None", ", 'note': ''"])
def test_no_note_no_line(ready, extra):
    ready.script(
        "def download_server_bin(variant, tag):\n"
        f"    return {{'variant': 'cpu', 'path': 'p'{extra}}}"
    )
    assert "note:" not in ready.zv("mmc-setup").out


@pytest.mark.parametrize("text", ["raise ImportError", "raise RuntimeError('broken')"])
def test_the_client_is_installed_when_it_cannot_be_imported(local, text):
    """What the installer brings is found at once by the modules that need it."""
    local.module("huggingface_hub", text)
    new = local.zv.engine_folder / "hub_client_part.py"
    local.installer(f"open({str(new)!r}, 'w').close()")
    local.script("import hub_client_part")
    out = local.zv("mmc-setup").out
    assert out == (
        HEAD
        + "\n🔧 Installing huggingface_hub (for model download)...\n"
        + f"  → {sys.executable} -m pip install huggingface_hub\n"
        + BEFORE_SERVER[len(HEAD + THERE) :]
        + "   ✓ llama-server ready (vulkan): /bin/llama-server\n"
        + READY
    )
    assert local.calls() == ["pip", "ensure_models", "download_server_bin"]
    assert local.calls("pip") == [["pip", ["install", "huggingface_hub"], {}]]


def test_the_client_cannot_be_installed(local):
    local.module("huggingface_hub", "raise ImportError")
    local.installer("print(' no network '); sys.exit(1)")
    assert tuple(local.zv("mmc-setup", "--no-download")) == (
        0,
        HEAD
        + "\n🔧 Installing huggingface_hub (for model download)...\n"
        + f"  → {sys.executable} -m pip install huggingface_hub\n"
        + "  ✗ Failed: no network\n"
        + "\n✗ Failed to install huggingface_hub.\n"
        + "   Manual retry: pip install huggingface_hub\n",
        "",
    )
    assert local.calls() == ["pip"]


def test_no_local_module(ready):
    ready.file.unlink()
    status, out, _ = ready.zv("mmc-setup")
    assert (status, out) == (
        0,
        HEAD + THERE + "\n✗ Local MMC module unavailable: "
        "No module named 'zelvoran_anpr.zelvoran_anpr_mmc_local'\n",
    )


@pytest.mark.parametrize("name", ["ensure_models", "_server_bin_runs", "download_server_bin"])
def test_a_name_is_missing_from_the_module(ready, name):
    ready.script(f"del {name}")
    assert ready.zv("mmc-setup").out == (
        HEAD + THERE + f"\n✗ Local MMC module unavailable: cannot import name {name!r} from "
        f"'zelvoran_anpr.zelvoran_anpr_mmc_local' ({ready.file})\n"
    )
    assert ready.calls() == []


def test_the_models_cannot_be_had(ready):
    ready.script("def ensure_models(**_):\n    raise OSError('hub says: no\\nsecond line')")
    assert tuple(ready.zv("mmc-setup", "--no-download")) == (
        0,
        HEAD
        + THERE
        + DOWNLOADING
        + "\n✗ Model download failed: hub says: no\nsecond line\n"
        + "   Retry later or set --hf-endpoint https://hf-mirror.com\n",
        "",
    )
    assert ready.calls() == ["ensure_models"]


def test_the_binary_cannot_be_had(ready):
    ready.script("def download_server_bin(**_):\n    raise ValueError('no build for this machine')")
    assert tuple(ready.zv("mmc-setup")) == (
        0,
        BEFORE_SERVER
        + "   ✗ auto-install failed: no build for this machine\n"
        + MANUAL
        + NOT_READY,
        "",
    )


def test_an_answer_without_a_path_counts_as_failed(ready):
    ready.script("def download_server_bin(**_):\n    return {'variant': 'cpu'}")
    out = ready.zv("mmc-setup").out
    assert out == BEFORE_SERVER + "   ✗ auto-install failed: 'path'\n" + MANUAL + NOT_READY


def test_skip_llama_finds_nothing(ready):
    assert ready.zv("mmc-setup", "--skip-llama").out == (
        BEFORE_SERVER + "   ✗ not installed (skipped by --skip-llama)\n" + NOT_READY
    )
    assert ready.zv.calls()[1:] == [["find_server_bin", [None], {}]]


def test_skip_llama_finds_the_users_own(ready):
    path = "/opt/llama/llama-server"
    assert ready.zv("mmc-setup", "--skip-llama", "--server-bin", path).out == (
        BEFORE_SERVER + f"   ✓ Found: {path}\n" + READY
    )
    assert ready.zv.calls()[1:] == [
        ["find_server_bin", [path], {}],
        ["_server_bin_runs", [path], {}],
    ]


def test_skip_llama_finds_one_that_does_not_run(ready):
    out = ready.zv("mmc-setup", "--skip-llama", "--server-bin", "/opt/broken").out
    assert out == BEFORE_SERVER + "   ✗ not installed (skipped by --skip-llama)\n" + NOT_READY


def test_a_failure_of_the_report_is_an_error(ready):
    ready.script("def find_server_bin(path):\n    raise OSError('disk gone')")
    status, out, _ = ready.zv("mmc-setup", "--skip-llama")
    assert (status, out) == (1, BEFORE_SERVER + "Error: disk gone\n")


@pytest.mark.parametrize("operation", ["ensure_models", "download_server_bin"])
def test_ctrl_c_is_no_failure(ready, operation):
    ready.script(f"def {operation}(**_):\n    raise KeyboardInterrupt")
    status, out, _ = ready.zv("mmc-setup")
    assert status == 1
    assert out.endswith("\nOperation cancelled.\n")
    assert "failed" not in out


def test_the_real_module(zv, tmp_path):
    """The engine's own module, against a hub and a release page on this machine."""
    pytest.importorskip("huggingface_hub")

    from hub_server import REPO, Hub
    from release_archives import linux_build

    with Hub() as hub:
        models = {
            "llm": hub.add_model(REPO, "tiny.gguf", b"GGUF" + b"m" * 5000),
            "mmproj": hub.add_model(REPO, "mmproj-tiny.gguf", b"GGUF" + b"p" * 500),
        }
        manifest = tmp_path / "manifest.json"
        manifest.write_text(json.dumps({"repo": REPO, "revision": "main", **models}))
        hub.add_release("b7", {"llama-b7-bin-ubuntu-x64.tar.gz": linux_build("b7")})
        env = {
            "PYTHONPATH": str(ENGINE),
            "ZELVORAN_MMC_MODEL_MANIFEST": str(manifest),
            "ZELVORAN_LLAMA_RELEASES": hub.url + "/repos/ggml-org/llama.cpp/releases",
            "HF_HOME": str(tmp_path / "hf"),
        }
        words = ("--hf-endpoint", hub.url, "--llama-variant", "cpu")
        status, out, _ = zv("mmc-setup", *words, env=env)
    assert status == 0
    folder = zv.home / ".zelvoran"
    server = folder / "llama-server" / "releases" / "b7-cpu" / "llama-b7" / "llama-server"
    assert out == (
        HEAD
        + THERE
        + DOWNLOADING
        + f"   ✓ LLM    : {folder / 'models/vlm/tiny.gguf'}\n"
        + f"   ✓ mmproj : {folder / 'models/vlm/mmproj-tiny.gguf'}\n"
        + SERVER
        + f"   ✓ llama-server ready (cpu): {server}\n"
        + READY
    )

    found = zv("mmc-setup", "--skip-llama", "--no-download", env=env).out
    assert found.endswith(f"   ✓ Found: {server}\n" + READY)

    files = [path for path in (folder / "models" / "vlm").rglob("*") if path.is_file()]
    kilobytes = sum(path.stat().st_size for path in files) / 1024
    status, out, _ = zv("mmc-uninstall", "--all", "--yes", env=env)
    assert status == 0
    assert "   • on-device VLM model: " in out
    assert f"   ✓ Removed VLM model ({kilobytes:.1f} KB freed)\n" in out
    assert not (folder / "models" / "vlm").exists()
    assert not (folder / "llama-server").exists()
