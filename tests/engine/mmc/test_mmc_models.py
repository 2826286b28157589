"""ensure_models: downloads from the hub, resumes, verifies, and needs no network afterwards."""

import hashlib
import os
import resource
import signal
from pathlib import Path

import pytest
from hub_server import REPO, Fault, Hub
from processes import wait_until
from zelvoran_anpr.mmc import MmcError


def digest(path: str) -> str:
    return hashlib.sha256(Path(path).read_bytes()).hexdigest()


def is_whole(paths: dict, models: dict) -> bool:
    return all(digest(paths[name]) == models[name]["sha256"] for name in ("llm", "mmproj"))


def part_size(local) -> int:
    return sum(p.stat().st_size for p in local._MODEL_DIR.glob(".partial/*tiny.gguf.part"))


def test_both_files_arrive_from_the_mirror(local, hub, models):
    paths = local.ensure_models(hf_endpoint=hub.url + "/", allow_download=True)
    assert list(paths) == ["llm", "mmproj"]
    assert is_whole(paths, models)
    assert Path(paths["llm"]) == local._MODEL_DIR / "tiny.gguf"
    assert sorted(p.name for p in local._MODEL_DIR.iterdir()) == [
        ".verified.json", "mmproj-tiny.gguf", "tiny.gguf",
    ]  # fmt: skip


def test_no_request_once_they_are_there(local, hub, models):
    first = local.ensure_models(hf_endpoint=hub.url)
    hub.seen.clear()
    assert local.ensure_models(hf_endpoint=hub.url) == first
    assert local.ensure_models(hf_endpoint="http://127.0.0.1:1", allow_download=False) == first
    assert hub.seen == []


def test_files_put_there_by_hand_are_taken_without_network(local, hub, models):
    local._MODEL_DIR.mkdir(parents=True)
    for name in ("llm", "mmproj"):
        content = hub.objects[models[name]["sha256"]]
        (local._MODEL_DIR / models[name]["file"]).write_bytes(content)
    assert is_whole(local.ensure_models(allow_download=False), models)
    assert hub.seen == []


def test_downloads_forbidden_and_nothing_there(local, hub, models):
    with pytest.raises(MmcError, match="tiny.gguf is missing.*Run: zv-anpr mmc-setup"):
        local.ensure_models(hf_endpoint=hub.url, allow_download=False)
    assert hub.seen == []


def test_the_users_hub_token_is_not_sent(local, hub, models, monkeypatch):
    monkeypatch.setenv("HF_TOKEN", "hf_secret")
    local.ensure_models(hf_endpoint=hub.url)
    assert {s.authorization for s in hub.seen} == {None}


def test_a_cut_connection_is_continued_in_the_same_run(local, hub, models):
    hub.faults = [Fault("cut", models["llm"]["sha256"], at=1_000_000)]
    assert is_whole(local.ensure_models(hf_endpoint=hub.url), models)
    assert [s.start for s in hub.downloads(models["llm"]["sha256"])] == [0, 1_000_000]


def test_each_cut_that_brought_bytes_renews_the_patience(local, hub, models):
    hub.faults = [
        Fault("cut", models["llm"]["sha256"], at=at) for at in range(200_000, 2_800_001, 200_000)
    ]
    assert is_whole(local.ensure_models(hf_endpoint=hub.url), models)
    assert hub.sent < 3_600_000


@pytest.mark.parametrize("kind", ["cut", "stall"])
def test_a_run_that_gave_up_is_continued_by_the_next(local, hub, models, monkeypatch, kind):
    from zelvoran_anpr.mmc.fetch import http

    monkeypatch.setattr(http, "STALL_SECONDS", 0.2)
    hub.faults = [Fault(kind, models["llm"]["sha256"], at=1_500_000, times=50)]
    with pytest.raises(MmcError, match="run it again to continue"):
        local.ensure_models(hf_endpoint=hub.url)
    assert part_size(local) == 1_500_000
    hub.faults, hub.sent = [], 0
    assert is_whole(local.ensure_models(hf_endpoint=hub.url), models)
    assert hub.sent == models["llm"]["size"] - 1_500_000 + models["mmproj"]["size"]


def test_a_server_that_ignores_ranges_is_started_over(local, hub, models):
    sha = models["llm"]["sha256"]
    hub.faults = [Fault("cut", sha, at=1_000_000), Fault("whole", sha)]
    assert is_whole(local.ensure_models(hf_endpoint=hub.url), models)


def test_another_range_than_asked_for_is_refused(local, hub, models):
    sha = models["llm"]["sha256"]
    hub.faults = [Fault("cut", sha, at=1_000_000), Fault("shift", sha)]
    with pytest.raises(MmcError, match="another part than asked for"):
        local.ensure_models(hf_endpoint=hub.url)


def test_a_corrupt_byte_is_noticed_and_fetched_again(local, hub, models):
    hub.faults = [Fault("corrupt", models["mmproj"]["sha256"], at=77)]
    assert is_whole(local.ensure_models(hf_endpoint=hub.url), models)
    assert [s.start for s in hub.downloads(models["mmproj"]["sha256"])] == [0, 0]


def test_a_mirror_that_always_corrupts_is_given_up(local, hub, models):
    hub.faults = [Fault("corrupt", models["mmproj"]["sha256"], at=77, times=9)]
    with pytest.raises(MmcError, match="mmproj-tiny.gguf arrived damaged twice"):
        local.ensure_models(hf_endpoint=hub.url)
    assert not (local._MODEL_DIR / "mmproj-tiny.gguf").exists()


def test_a_mirror_with_another_file_is_refused_before_downloading(local, hub, models):
    hub.add_model(REPO, "tiny.gguf", b"GGUF of somebody else")
    with pytest.raises(MmcError, match="has 21 bytes, expected 3000004; try another mirror"):
        local.ensure_models(hf_endpoint=hub.url)
    assert hub.downloads() == []


def test_a_body_of_another_length_is_refused(local, hub, models):
    hub.faults = [Fault("longer", models["llm"]["sha256"])]
    with pytest.raises(MmcError, match="with 3000005 bytes, expected 3000004"):
        local.ensure_models(hf_endpoint=hub.url)


@pytest.mark.parametrize(
    ("status", "text"),
    [(404, "the model hub answered 404"), (401, "the model hub answered 401"), (500, "500")],
)
def test_a_hub_that_refuses_is_told_in_one_line(local, hub, models, status, text):
    hub.faults = [Fault("status", "/resolve/", at=status, times=99)]
    with pytest.raises(MmcError, match=text) as caught:
        local.ensure_models(hf_endpoint=hub.url)
    assert "\n" not in str(caught.value)


def test_storage_that_is_busy_for_a_moment_is_asked_again(local, hub, models):
    hub.faults = [Fault("status", "/storage/", at=503), Fault("drop", "/storage/")]
    assert is_whole(local.ensure_models(hf_endpoint=hub.url), models)


def test_storage_that_forbids_is_not_asked_again(local, hub, models):
    hub.faults = [Fault("status", "/storage/", at=403, times=99)]
    with pytest.raises(MmcError, match="answered 403"):
        local.ensure_models(hf_endpoint=hub.url)
    assert len(hub.downloads()) == 1


def test_no_hub_at_all(local, home, models):
    with pytest.raises(MmcError, match="cannot reach the model hub at http://127.0.0.1:1/Qwen"):
        local.ensure_models(hf_endpoint="http://127.0.0.1:1")


def test_an_address_without_its_scheme_is_named(local, home, models):
    with pytest.raises(MmcError, match="must start with https://, not 'hf-mirror.example'"):
        local.ensure_models(hf_endpoint=" hf-mirror.example/")


def test_a_damaged_file_is_replaced(local, hub, models):
    paths = local.ensure_models(hf_endpoint=hub.url)
    with open(paths["mmproj"], "r+b") as stream:
        stream.seek(100)
        stream.write(b"rot")
    with pytest.raises(MmcError, match="mmproj-tiny.gguf is damaged"):
        local.ensure_models(allow_download=False)
    assert is_whole(local.ensure_models(hf_endpoint=hub.url), models)


@pytest.mark.parametrize("how", [signal.SIGKILL, signal.SIGINT, signal.SIGTERM])
def test_killed_and_run_again_asks_only_for_the_rest(local, hub: Hub, models, run, how):
    hub.faults = [Fault("stall", models["llm"]["sha256"], at=2_000_000)]
    child = run(f"module.ensure_models({hub.url!r})")
    wait_until(lambda: part_size(local) == 2_000_000 or child.poll() is not None)
    child.send_signal(how)
    assert child.wait(10) != 0
    hub.faults, hub.sent = [], 0
    assert is_whole(local.ensure_models(hf_endpoint=hub.url), models)
    assert hub.sent == models["llm"]["size"] - 2_000_000 + models["mmproj"]["size"]


def test_killed_between_the_last_byte_and_the_rename(local, hub, models):
    local.ensure_models(hf_endpoint=hub.url)
    part = local._MODEL_DIR / ".partial" / f"{models['llm']['sha256'][:12]}-tiny.gguf.part"
    part.parent.mkdir()
    os.replace(local._MODEL_DIR / "tiny.gguf", part)
    hub.sent = 0
    assert is_whole(local.ensure_models(hf_endpoint=hub.url), models)
    assert hub.sent == 0


def test_a_write_that_fails_for_size_keeps_what_was_written(local, hub, models, run):
    def small_files() -> None:
        resource.setrlimit(resource.RLIMIT_FSIZE, (1_000_000, 1_000_000))

    child = run(f"module.ensure_models({hub.url!r})", preexec_fn=small_files)
    _, errors = child.communicate()
    assert "the disk is full while writing tiny.gguf" in errors.splitlines()[-1]
    assert part_size(local) == 1_000_000
    hub.sent = 0
    assert is_whole(local.ensure_models(hf_endpoint=hub.url), models)
    assert hub.sent == models["llm"]["size"] - 1_000_000 + models["mmproj"]["size"]


def test_a_second_set_up_waits_and_then_finds_all_done(local, hub, models, run):
    hub.faults = [Fault("stall", models["llm"]["sha256"], at=2_000_000)]
    first = run(f"module.ensure_models({hub.url!r})")
    wait_until(lambda: part_size(local) == 2_000_000)
    second = run(f"print(module.ensure_models({hub.url!r})['llm'])")
    assert "another model set-up is running; waiting for it" in second.stderr.readline()
    first.kill()
    out, _ = second.communicate(timeout=60)
    assert out.strip() == str(local._MODEL_DIR / "tiny.gguf")
    assert [s.start for s in hub.downloads(models["llm"]["sha256"])] == [0, 2_000_000]


def test_works_until_needed_without_huggingface_hub(local, hub, models, run):
    code = f"import sys; sys.modules['huggingface_hub'] = None\nmodule.ensure_models({hub.url!r})"
    _, errors = run(code).communicate()
    assert "huggingface_hub is missing; run: pip install huggingface_hub" in errors


def test_importing_the_module_loads_nothing_heavy(run):
    heavy = ("numpy", "PIL", "huggingface_hub", "requests", "urllib.request", "ssl", "httpx")
    out, errors = run(
        f"import sys; print([n for n in {heavy!r} if n in sys.modules])"
    ).communicate()
    assert (out.strip(), errors) == ("[]", "")


@pytest.mark.parametrize(
    ("text", "told"),
    [
        ("{", "is not a model manifest"),
        ('{"repo": "a/b", "llm": {"file": "../x", "size": 1, "sha256": "0"}}', "plain file name"),
    ],
)
def test_a_bad_manifest_is_named(local, tmp_path, monkeypatch, text, told):
    path = tmp_path / "m.json"
    path.write_text(text)
    monkeypatch.setenv("ZELVORAN_MMC_MODEL_MANIFEST", str(path))
    with pytest.raises(MmcError, match=told):
        local.ensure_models()
