"""What is written replaces a file as a whole or not at all; pipes, links and modes stay."""

import contextlib
import json
import os
import resource
import shutil
import signal
import stat
import subprocess
import threading

import pytest
from program import EXECUTABLE

Image = pytest.importorskip("PIL.Image")

OLD = b"what was there before"
FORMATS = ["jpg", "png", "bmp", "tif"]
LIMIT = 20_000  # bytes; each file that the tests write is larger
needs_strace = pytest.mark.skipif(not shutil.which("strace"), reason="strace is not installed")


@pytest.fixture
def car(zv):
    zv.script(
        "def answer(path):\n"
        "    plate = {'ocr': 'A' * 30_000, 'ocr_conf': 0.9, 'ltrb': [40, 60, 140, 90]}\n"
        "    return {'results': [plate]}\n"
    )
    path = zv.folder / "car.png"
    Image.effect_noise((300, 200), 90).save(path)
    return path


def names(zv) -> set[str]:
    return set(os.listdir(zv.folder)) - {"home"}


def allow_only_small_files() -> None:
    resource.setrlimit(resource.RLIMIT_FSIZE, (LIMIT, LIMIT))


def aimed(zv, number: signal.Signals, *words: str) -> int:
    """The exit status of a run that is sent the signal when it first flushes a file to the disk."""
    inject = f"inject=fsync:signal={number.name}:when=1"
    command = ["strace", "-o", "trace", "-e", "trace=fsync", "-e", inject, EXECUTABLE, *words]
    done = subprocess.run(
        command, cwd=zv.folder, env=zv.environment(), capture_output=True, timeout=60, check=False
    )
    assert number.name in (zv.folder / "trace").read_text(), "the signal was never sent"
    (zv.folder / "trace").unlink()
    return done.returncode


@pytest.mark.parametrize("existing", [False, True])
def test_a_json_file_that_may_not_grow_stays_as_it_was(zv, car, existing):
    target = zv.folder / "r.json"
    if existing:
        target.write_bytes(OLD)
    status, out, err = zv("car.png", "--json", "r.json", preexec_fn=allow_only_small_files)
    assert status == 0
    assert "\nError: Failed to save JSON results\n" in out
    assert err == "zv-anpr: [Errno 27] File too large: 'r.json'\n"
    assert names(zv) == ({"car.png", "r.json"} if existing else {"car.png"})
    assert not existing or target.read_bytes() == OLD


@pytest.mark.parametrize("existing", [False, True])
@pytest.mark.parametrize("suffix", FORMATS)
def test_a_picture_that_may_not_grow_stays_as_it_was(zv, car, suffix, existing):
    target = zv.folder / f"out.{suffix}"
    if existing:
        target.write_bytes(OLD)
    out = zv("car.png", "--output", target.name, preexec_fn=allow_only_small_files).out
    assert f"\nError: [Errno 27] File too large: '{target.name}'\n" in out
    assert names(zv) == ({"car.png", target.name} if existing else {"car.png"})
    assert not existing or target.read_bytes() == OLD


@pytest.mark.parametrize("linked", [False, True])
def test_a_photo_that_is_its_own_output_survives_a_failure(zv, car, linked):
    if linked:
        os.link(car, zv.folder / "again.png")
    before = car.read_bytes()
    out = zv("car.png", "--output", "car.png", preexec_fn=allow_only_small_files).out
    assert "Error: [Errno 27] File too large" in out
    assert car.read_bytes() == before


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGHUP])
@needs_strace
def test_an_ended_run_leaves_one_whole_file_and_no_other(zv, car, number):
    (zv.folder / "r.json").write_bytes(OLD)
    assert aimed(zv, number, "car.png", "--json", "r.json") == -number
    content = (zv.folder / "r.json").read_bytes()
    assert content == OLD or json.loads(content)
    assert names(zv) == {"car.png", "r.json"}


@needs_strace
def test_a_killed_run_leaves_the_earlier_file(zv, car):
    before = car.read_bytes()
    assert aimed(zv, signal.SIGKILL, "car.png", "--output", "car.png") == -signal.SIGKILL
    assert car.read_bytes() == before


@needs_strace
def test_ctrl_c_while_the_last_file_is_written_is_not_lost(zv, car):
    assert aimed(zv, signal.SIGINT, "car.png", "--json", "r.json") == 1
    assert aimed(zv, signal.SIGINT, "car.png", "--output", "out.jpg") == 1
    assert names(zv) == {"car.png", "r.json", "out.jpg"}


def test_ctrl_c_breaks_off_the_work_on_a_large_picture(zv, car):
    Image.effect_noise((4000, 3000), 90).convert("RGB").save(zv.folder / "large.bmp")
    process = zv.popen("large.bmp", "--output", "out.png", "--json", "r.json")
    lines = [process.stdout.readline().decode() for _ in range(2)]
    assert lines[1].startswith("large.bmp: 1 plates: ")
    process.send_signal(signal.SIGINT)
    out, _ = process.communicate(timeout=60)
    assert process.returncode == 1
    assert out.decode() == "\nOperation cancelled.\n"
    assert names(zv) == {"car.png", "large.bmp"}


def test_mode_and_owner_and_links_stay(zv, car):
    (zv.folder / "r.json").write_bytes(OLD)
    (zv.folder / "link.json").symlink_to("r.json")
    (zv.folder / "r.json").chmod(0o604)
    if os.geteuid() == 0:
        os.chown(zv.folder / "r.json", 1234, 1235)
    before = (zv.folder / "r.json").stat()
    zv("car.png", "--json", "link.json")
    after = (zv.folder / "r.json").stat()
    assert (zv.folder / "link.json").is_symlink()
    assert json.loads((zv.folder / "r.json").read_text())
    assert stat.S_IMODE(after.st_mode) == 0o604
    assert (after.st_uid, after.st_gid) == (before.st_uid, before.st_gid)


def test_a_file_with_two_names_keeps_both(zv, car):
    (zv.folder / "r.json").write_bytes(OLD)
    os.link(zv.folder / "r.json", zv.folder / "s.json")
    zv("car.png", "--json", "r.json")
    assert json.loads((zv.folder / "s.json").read_text())


def test_a_pipe_is_written_to_directly(zv, car):
    os.mkfifo(zv.folder / "pipe")
    read = []
    reader = threading.Thread(target=lambda: read.append((zv.folder / "pipe").read_bytes()))
    reader.start()
    assert "Results saved to: " in zv("car.png", "--json", "pipe").out
    reader.join(timeout=30)
    assert json.loads(read[0])[0]["ocr_conf"] == 0.9
    assert stat.S_ISFIFO((zv.folder / "pipe").stat().st_mode)


def test_ctrl_c_ends_the_wait_for_the_reader_of_a_pipe(zv, car):
    os.mkfifo(zv.folder / "pipe")
    process = zv.popen("car.png", "--json", "pipe")
    process.stdout.readline()
    process.stdout.readline()  # the photo has been read
    threading.Timer(0.5, lambda: process.send_signal(signal.SIGINT)).start()
    out, _ = process.communicate(timeout=30)
    assert process.returncode == 1
    assert out.decode().endswith("\nOperation cancelled.\n")


def test_json_may_go_to_standard_output(zv, car):
    out = zv("car.png", "--json", "/dev/stdout").out
    start = out.index("[\n")
    assert json.loads(out[start : out.rindex("]") + 1])[0]["ocr_conf"] == 0.9
    assert "\nResults saved to: /" in out
    assert out.endswith("\nTotal: 1 plates from 1 images\n")


def test_json_to_the_file_that_holds_the_output_cuts_nothing_off(zv, car):
    with open(zv.folder / "all.txt", "wb") as file:
        zv("car.png", "--json", "all.txt", stdout=file)
    text = (zv.folder / "all.txt").read_text()
    assert text.startswith("Processing 1 images")
    assert text.endswith("\nTotal: 1 plates from 1 images\n")
    assert '"ocr_conf": 0.9' in text


@pytest.fixture
def small_disk(tmp_path):
    """A folder on a disk of 64 KiB."""
    folder = tmp_path / "small"
    folder.mkdir()
    mount = ["mount", "-t", "tmpfs", "-o", "size=64k", "none", folder]
    if (
        not shutil.which("mount")
        or subprocess.run(mount, capture_output=True, check=False).returncode
    ):
        pytest.skip("no file system can be mounted here")
    yield folder
    subprocess.run(["umount", folder], check=True)


def test_a_full_disk_destroys_nothing(zv, car, small_disk):
    for name in ["r.json", "out.png"]:
        (small_disk / name).write_bytes(OLD * 1000)
    os.link(small_disk / "r.json", small_disk / "s.json")
    Image.effect_noise((60, 50), 90).convert("RGB").save(small_disk / "in.jpg")
    before = {path.name: path.read_bytes() for path in small_disk.iterdir()}
    with open(small_disk / "fill", "wb", buffering=0) as file, contextlib.suppress(OSError):
        while file.write(bytes(4096)):
            pass
    for words in [("--json", "r.json"), ("--output", "out.png"), ("--output", "in.bmp")]:
        out = zv(car, words[0], small_disk / words[1]).out
        assert "Error: " in out
        after = {path.name: path.read_bytes() for path in small_disk.iterdir()}
        after.pop("fill")
        assert after == before
