"""mmc-setup: what it asks of the local-MMC module, in which order, and what it reports."""

import json
from pathlib import Path

import pytest
from setup_lines import (
    BEFORE_SERVER,
    DOWNLOADING,
    HEAD,
    MANUAL,
    NOT_READY,
    READY,
    SERVER,
    THERE,
)

ENGINE = Path(__file__).resolve().parents[3] / "engine"


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
