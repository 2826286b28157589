"""Starts at the same time, successors that do not start, full disks: never no server, never two."""

import os
import shutil
import signal
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

import pytest
from conftest import Server
from held_engine import Hold
from processes import alive, free_port, wait_until


def test_of_two_starts_at_once_one_succeeds_with_its_own_process(home):
    port = free_port()
    with ThreadPoolExecutor(2) as pool:
        calls = [
            pool.submit(home.call, "start_server", port=port, daemon=True, threads=1)
            for _ in range(2)
        ]
        done = sorted((call.result() for call in calls), key=lambda one: one.returncode)
    assert [one.returncode for one in done] == [0, 1], [one.stdout + one.stderr for one in done]
    (found,) = home.value("find_all_servers")
    assert f"started (PID: {found['pid']})" in done[0].stdout
    assert alive(found["pid"])
    assert f"in use by an ANPR server (PID {found['pid']})" in done[1].stderr
    assert home.call("stop_server", stop_all=True).returncode == 0
    assert not alive(found["pid"])
    assert home.value("find_all_servers") == []


def test_stop_all_ends_a_server_that_has_not_said_a_word_yet(home, spawn, tmp_path):
    hold = Hold(tmp_path / "hold")
    hold.add_to(home.environment)
    starting = spawn(
        home.command("start_server", port=free_port(), daemon=True), env=home.environment,
        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
    )  # fmt: skip
    wait_until(lambda: list((home.config_dir / "run").glob("server-*.json")))
    done = home.call("stop_server", stop_all=True)
    assert done.returncode == 0, done.stderr
    assert "stopped (PID: " in done.stdout
    assert starting.wait(30) == 1
    assert not list((home.config_dir / "run").iterdir())


@pytest.mark.parametrize(
    "wrong", [{"backend": "directml"}, {"detector_model": "none"}, {"ocr_model": "none"}]
)
def test_a_restart_with_what_cannot_be_loaded_keeps_the_server(home, wrong):
    before = home.start(threads=1)
    home.configure(server=wrong)
    done = home.call("restart_server")
    assert done.returncode == 1
    assert "The server did not start" in done.stderr
    (found,) = home.value("find_all_servers")
    assert (found["pid"], found["port"]) == (before.pid, before.port)
    assert before.client().get("/readyz").status_code == 200
    assert len(list((home.config_dir / "run").iterdir())) == 1


def test_a_restart_leaves_no_time_without_models(home):
    before = home.start(threads=1)
    with ThreadPoolExecutor(1) as pool:
        restart = pool.submit(home.call, "restart_server")
        answers = set()
        while not restart.done():
            try:
                answers.add(before.client().get("/readyz").status_code)
            except OSError:
                continue
            except Exception as error:  # noqa: BLE001  the moment in which the port changes hands
                assert "Connect" in type(error).__name__ or "Read" in type(error).__name__
    assert restart.result().returncode == 0, restart.result().stderr
    assert answers <= {200, 503}
    (found,) = home.value("find_all_servers")
    assert found["pid"] != before.pid
    assert Server(home, before.port).client().get("/readyz").status_code == 200


def test_an_upgrade_to_a_release_that_does_not_start_keeps_the_server(home, tmp_path):
    hooks = tmp_path / "hooks"
    (hooks / "pip").mkdir(parents=True)
    (hooks / "pip" / "__init__.py").touch()
    (hooks / "pip" / "__main__.py").write_text(
        "import pathlib\npathlib.Path(__file__).with_name('installed').touch()\n"
    )
    (hooks / "sitecustomize.py").write_text(
        "import pathlib, sys\n"
        "broken = pathlib.Path(__file__).with_name('pip') / 'installed'\n"
        "if broken.exists() and 'zelvoran_anpr.server.serve' in ' '.join(sys.orig_argv):\n"
        "    raise SystemExit('this release is broken')\n"
    )
    before = home.start(threads=1)
    home.environment["PYTHONPATH"] = str(hooks)
    done = home.call("upgrade_server")
    assert done.returncode == 1
    assert "The new release does not start" in done.stderr
    assert before.client().get("/readyz").status_code == 200
    assert home.value("get_status")["pid"] == before.pid


def test_the_files_of_the_release_before_are_put_back(tmp_path, monkeypatch):
    from zelvoran_anpr.server.daemon.saved_package import SavedPackage

    package, info = tmp_path / "pack", tmp_path / "pack-1.0.dist-info"
    package.mkdir()
    info.mkdir()
    (package / "one.py").write_text("old")
    (info / "METADATA").write_text("Metadata-Version: 2.1\nName: pack\nVersion: 1.0\n")
    (info / "RECORD").write_text("pack/one.py,,\npack-1.0.dist-info/METADATA,,\n"
                                 "pack-1.0.dist-info/RECORD,,\n")  # fmt: skip
    monkeypatch.syspath_prepend(str(tmp_path))
    with SavedPackage("pack") as saved:
        shutil.rmtree(info)
        fresh = tmp_path / "pack-2.0.dist-info"
        fresh.mkdir()
        (package / "one.py").write_text("new")
        (package / "two.py").write_text("new")
        (fresh / "METADATA").write_text("Metadata-Version: 2.1\nName: pack\nVersion: 2.0\n")
        (fresh / "RECORD").write_text("pack/one.py,,\npack/two.py,,\n"
                                      "pack-2.0.dist-info/METADATA,,\n"
                                      "pack-2.0.dist-info/RECORD,,\n")  # fmt: skip
        assert saved.restore()
    assert (package / "one.py").read_text() == "old"
    assert not (package / "two.py").exists()
    assert not (fresh / "METADATA").exists()
    assert (info / "METADATA").exists()
    with SavedPackage("no-such-distribution") as nothing:
        assert not nothing.restore()


def test_a_hang_up_ends_a_server_in_the_foreground_gracefully(home, spawn):
    process = spawn(
        home.command("start_server", port=free_port()), env=home.environment,
        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
    )  # fmt: skip
    wait_until(lambda: home.value("get_status")["running"])
    wait_until(lambda: "the models are warm" in home.log())
    process.send_signal(signal.SIGHUP)
    assert process.wait(30) == 0
    assert "SIGHUP" in home.log()
    assert home.value("find_all_servers") == []


def test_a_hang_up_does_not_end_a_server_in_the_background(home):
    server = home.start(threads=1)
    os.kill(server.pid, signal.SIGHUP)
    wait_until(lambda: "SIGHUP: going on" in home.log())
    assert server.client().get("/livez").status_code == 200


_FULL = """
set -e
mount -t tmpfs -o size=2m none "$ZELVORAN_CONFIG_DIR"
printf '{"server": {"detector_model": "320p_fp32"}}' > "$ZELVORAN_CONFIG_DIR/server_config.yaml"
call() { "$PYTHON" -c "from zelvoran_anpr import zelvoran_anpr_server_daemon as d; $1"; }
call "d.start_server(port=$PORT, daemon=True, threads=1)"
before=$(call "print(d.get_status()['pid'])")
dd if=/dev/zero of="$ZELVORAN_CONFIG_DIR/filler" bs=4k 2>/dev/null || true
if call "d.restart_server()" 2>&1; then echo "restart told of success"; fi
"$PYTHON" -c "import urllib.request as u; u.urlopen('http://127.0.0.1:$PORT/readyz')"
test "$(call "print(d.get_status()['pid'])")" = "$before"
rm "$ZELVORAN_CONFIG_DIR/filler"
call "d.stop_server()"
"""


@pytest.mark.skipif(os.name != "posix" or not shutil.which("unshare") or os.geteuid() != 0,
                    reason="needs a mount namespace")  # fmt: skip
def test_a_restart_on_a_full_disk_keeps_the_server(home):
    environment = {**home.environment, "PYTHON": sys.executable, "PORT": str(free_port())}
    done = subprocess.run(
        ["unshare", "--mount", "sh", "-c", _FULL], env=environment, text=True,
        capture_output=True, check=False, timeout=200,
    )  # fmt: skip
    assert done.returncode == 0, done.stdout + done.stderr
    assert "told of success" not in done.stdout
