"""mmc-setup where something is missing or fails: what is reported, and what is tried no more."""

import sys
from pathlib import Path

import pytest
from setup_lines import BEFORE_SERVER, DOWNLOADING, HEAD, MANUAL, NOT_READY, READY, THERE

ENGINE = Path(__file__).resolve().parents[3] / "engine"


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
