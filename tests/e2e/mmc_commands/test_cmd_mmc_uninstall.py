"""mmc-uninstall: lists, asks, removes through the module, and takes nothing for a yes but yes."""

import os
import signal
import sys
import time

import pytest

HEAD = f"\nZelvoran ANPR — Local MMC Uninstall\n{'=' * 50}\n"
LEFT = (
    "   Python deps (e.g. huggingface_hub) were left intact.\n"
    "   Reinstall anytime with: zv-anpr mmc-setup\n"
)
KEPT = "   (Model kept in ~/.zelvoran/models/vlm — use --all to remove it too.)\n"
PROMPT = "\nProceed? [y/N] "
ABORTED = "Aborted. Nothing was removed.\n"


@pytest.fixture
def both(local):
    local.bin.mkdir()
    local.model.mkdir()
    return local


def test_only_the_binary(both):
    assert tuple(both.zv("mmc-uninstall", stdin="y\n")) == (
        0,
        HEAD
        + f"\nWill remove:\n   • llama-server binary: {both.bin}  (1024.0 KB)\n"
        + "   Total to free: 1024.0 KB\n"
        + PROMPT
        + "\n   ✓ Removed llama-server binary (1024.0 KB freed)\n"
        + "\n✅ Done.\n"
        + KEPT
        + LEFT,
        "",
    )
    assert both.zv.calls() == [["_dir_size", [str(both.bin)], {}], ["remove_server_bin", [], {}]]


def test_all(both):
    assert both.zv("mmc-uninstall", "--all", "--yes").out == (
        HEAD
        + f"\nWill remove:\n   • llama-server binary: {both.bin}  (1024.0 KB)\n"
        + f"   • on-device VLM model: {both.model}  (1.5 KB)\n"
        + "   Total to free: 1.0 MB\n"
        + "\n   ✓ Removed llama-server binary (1024.0 KB freed)\n"
        + "   ✓ Removed VLM model (5120.0 GB freed)\n"
        + "\n✅ Done.\n"
        + LEFT
    )
    assert both.calls() == ["_dir_size", "_dir_size", "remove_server_bin", "remove_models"]


@pytest.mark.parametrize("options", [["--models-only"], ["--models-only", "--all"]])
def test_only_the_model(both, options):
    assert both.zv("mmc-uninstall", *options, "-y").out == (
        HEAD
        + f"\nWill remove:\n   • on-device VLM model: {both.model}  (1.5 KB)\n"
        + "   Total to free: 1.5 KB\n"
        + "\n   ✓ Removed VLM model (5120.0 GB freed)\n"
        + "\n✅ Done.\n"
        + LEFT
    )
    assert both.calls() == ["_dir_size", "remove_models"]


def test_a_missing_target_is_asked_for_all_the_same(local):
    local.model.mkdir()
    local.script("def remove_server_bin():\n    return {'removed': False}")
    assert local.zv("mmc-uninstall", "--all", "-y").out == (
        HEAD
        + f"\nWill remove:\n   • on-device VLM model: {local.model}  (1.5 KB)\n"
        + "   Total to free: 1.5 KB\n"
        + "\n   • llama-server binary: nothing to remove\n"
        + "   ✓ Removed VLM model (5120.0 GB freed)\n"
        + "\n✅ Done.\n"
        + LEFT
    )
    assert local.calls() == ["_dir_size", "remove_server_bin", "remove_models"]


def test_models_that_went_in_between(both):
    both.script("def remove_models():\n    return {'removed': 0}")
    assert "\n   • VLM model: nothing to remove\n" in both.zv("mmc-uninstall", "--all", "-y").out


HINT = (
    "\n(Use --all to also remove the downloaded model, "
    "or --models-only to remove just the model.)\n"
)
NOTHING = HEAD + "\nNothing to remove — targets do not exist:\n"


def test_nothing_there(local):
    binary = f"   • llama-server binary: {local.bin}\n"
    model = f"   • on-device VLM model: {local.model}\n"
    assert tuple(local.zv("mmc-uninstall")) == (0, NOTHING + binary + HINT, "")
    assert local.zv("mmc-uninstall", "--all").out == NOTHING + binary + model
    assert local.zv("mmc-uninstall", "--models-only").out == NOTHING + model
    assert local.calls() == []


def test_a_file_counts_and_a_dangling_link_does_not(local):
    local.bin.symlink_to(local.zv.folder / "nowhere")
    local.model.write_text("a file")
    out = local.zv("mmc-uninstall", "--all").out
    assert "llama-server binary" not in out
    assert f"   • on-device VLM model: {local.model}  (1.5 KB)\n" in out


def test_the_total_is_the_sum_of_bytes(both):
    both.script("def _dir_size(path):\n    return 600")
    out = both.zv("mmc-uninstall", "--all").out
    assert out.count("  (600 B)\n") == 2
    assert "   Total to free: 1.2 KB\n" in out


@pytest.mark.parametrize("answer", ["y\n", "Y \n", " yes\n", "YES\r\n", "yEs", "\u00a0y\n"])
def test_yes(both, answer):
    assert both.zv("mmc-uninstall", stdin=answer).out.endswith(KEPT + LEFT)
    assert "remove_server_bin" in both.calls()


@pytest.mark.parametrize("answer", ["", "\n", "n\n", "no\n", "yess\n", "j\n", "\ny\n", "y n\n"])
def test_everything_else_is_no(both, answer):
    status, out, _ = both.zv("mmc-uninstall", stdin=answer)
    assert status == 0
    assert out.endswith(PROMPT + ABORTED)
    assert both.calls() == ["_dir_size"]


@pytest.mark.skipif(sys.platform == "win32", reason="needs process groups")
@pytest.mark.parametrize("typed", [b"", b"y"])
def test_ctrl_c_at_the_prompt_is_no(both, typed):
    process = both.zv.popen("mmc-uninstall", stdin=-1, start_new_session=True)
    seen = b""
    while not seen.endswith(PROMPT.encode()):
        seen += os.read(process.stdout.fileno(), 4096)
    process.stdin.write(typed)
    process.stdin.flush()
    time.sleep(0.2)  # until the read has begun
    os.killpg(process.pid, signal.SIGINT)
    out, err = process.communicate(timeout=60)
    assert (process.returncode, out.decode(), err) == (0, ABORTED, b"")
    assert both.calls() == ["_dir_size"]


def test_no_module(local):
    local.file.unlink()
    assert tuple(local.zv("mmc-uninstall", "-y")) == (
        0,
        HEAD + "\n✗ Local MMC module unavailable: "
        "No module named 'zelvoran_anpr.zelvoran_anpr_mmc_local'\n",
        "",
    )


def test_a_name_is_missing(both):
    both.script("del remove_models")
    assert both.zv("mmc-uninstall", "-y").out == (
        HEAD + "\n✗ Local MMC module unavailable: cannot import name 'remove_models' from "
        f"'zelvoran_anpr.zelvoran_anpr_mmc_local' ({both.file})\n"
    )
    assert both.calls() == []


def test_a_removal_that_fails_keeps_what_was_reported(both):
    both.script("def remove_models():\n    raise PermissionError('in use')")
    status, out, _ = both.zv("mmc-uninstall", "--all", "-y")
    assert status == 1
    assert out.endswith("\n   ✓ Removed llama-server binary (1024.0 KB freed)\nError: in use\n")


def test_a_size_that_cannot_be_told_is_an_error(both):
    both.script("def _dir_size(path):\n    raise OSError('gone')")
    status, out, _ = both.zv("mmc-uninstall", "-y")
    assert (status, out) == (1, HEAD + "\nWill remove:\nError: gone\n")


def test_a_size_that_cannot_be_shown_leaves_no_half_line(both):
    both.script("def _dir_size(path):\n    return 10**400")
    status, out, _ = both.zv("mmc-uninstall", "-y")
    assert status == 1
    assert out.startswith(HEAD + "\nWill remove:\nError: ")


@pytest.mark.parametrize("answer, key", [("{}", "removed"), ("{'removed': True}", "freed_bytes")])
def test_an_answer_without_its_keys_is_an_error(both, answer, key):
    both.script(f"def remove_server_bin():\n    return {answer}")
    status, out, _ = both.zv("mmc-uninstall", "-y")
    assert status == 1
    assert out.endswith(f"\nError: '{key}'\n")
