"""gpu-setup cut off at every step: the next gpu-setup repairs what the first one left."""

import json
import os
import pty
import signal
from dataclasses import dataclass
from pathlib import Path

import pytest
from processes import wait_until
from program import EXECUTABLE

GPU = "onnxruntime-gpu"
ONLY_GPU = {GPU: "1.19.2", "nvidia-cuda-runtime-cu12": "12.0", "nvidia-cudnn-cu12": "12.0"}


@dataclass
class Point:
    """Where the work is held still; `both` starts with both packages, so that step 1 reinstalls."""

    words: str
    event: str | None = None
    path: str = ""
    both: bool = False


FRESH = "pip install onnxruntime-gpu[cuda,cudnn]"
AGAIN = "pip install --force-reinstall onnxruntime-gpu[cuda,cudnn]"
REMOVAL = "pip uninstall onnxruntime -y"
RESTORE = "pip install --force-reinstall --no-deps onnxruntime-gpu"
POINTS = {
    "step 1, before it installs": Point(FRESH),
    "step 1, writing the shared module": Point(FRESH, "open", "onnxruntime/_flavour.py"),
    "step 1, before it is recorded": Point(
        FRESH, "os.rename", "onnxruntime_gpu-1.19.2.dist-info/REC"
    ),
    "step 1, a library before it is recorded": Point(
        FRESH, "os.rename", "nvidia_cudnn_cu12-12.0.dist-info/REC"
    ),
    "step 1, setting the old one aside": Point(AGAIN, "os.rename", "/onnxruntime", both=True),
    "step 2": Point("import onnxruntime; print("),
    "step 3, before it removes": Point(REMOVAL),
    "step 3, in the middle of it": Point(REMOVAL, "os.rename", "/onnxruntime/"),
    "step 3b, before it installs": Point(RESTORE),
    "step 3b, setting the old one aside": Point(RESTORE, "os.rename", "/onnxruntime"),
    "step 3b, writing the shared module": Point(RESTORE, "open", "onnxruntime/_flavour.py"),
    "step 3b, its check": Point("assert o.__version__"),
    "the verification": Point("PROVIDERS_JSON"),
}
INTERRUPTED = [
    "step 1, writing the shared module",
    "step 2",
    "step 3, in the middle of it",
    "step 3b, writing the shared module",
    "the verification",
]


def cut_off(runtime, tmp_path: Path, point: Point, number: int) -> tuple[int, str, str]:
    reached = tmp_path / "reached"
    runtime.zv.engine_folder.joinpath("sitecustomize.py").write_bytes(
        Path(__file__).with_name("stall.py").read_bytes()
    )
    stall = {
        "words": point.words,
        "event": point.event,
        "path": point.path,
        "reached": str(reached),
    }
    env = runtime.variables(ZV_TEST_STALL=json.dumps(stall))
    process = runtime.zv.popen("gpu-setup", "cuda", env=env, start_new_session=True)
    wait_until(lambda: reached.exists() or process.poll() is not None)
    assert process.poll() is None, process.communicate()
    os.killpg(process.pid, number)
    out, err = process.communicate(timeout=60)
    return process.returncode, out.decode(), err.decode()


def repaired(runtime) -> None:
    status, out, err = runtime.zv("gpu-setup", "cuda", env=runtime.variables())
    assert status == 0, out + err
    assert err == "zv-anpr: an earlier gpu-setup was cut off; installing anew\n"
    assert "\n✅ CUDAExecutionProvider is available!\n" in out
    assert runtime.distributions() == ONLY_GPU
    assert runtime.session_runs_on() == GPU
    assert not [path.name for path in runtime.site.iterdir() if path.name.startswith("~")]


def prepare(runtime, point: Point) -> None:
    runtime.have("onnxruntime", *([GPU] if point.both else []))
    runtime.offer(GPU)


@pytest.mark.parametrize("name", POINTS)
def test_kill(runtime, tmp_path, name):
    prepare(runtime, POINTS[name])
    cut_off(runtime, tmp_path, POINTS[name], signal.SIGKILL)
    repaired(runtime)


@pytest.mark.parametrize("name", INTERRUPTED)
def test_ctrl_c(runtime, tmp_path, name):
    prepare(runtime, POINTS[name])
    status, out, err = cut_off(runtime, tmp_path, POINTS[name], signal.SIGINT)
    assert status == 1
    assert out.endswith("\nOperation cancelled.\n")
    assert err == "zv-anpr: the switch is not finished; run gpu-setup again to repair it\n"
    repaired(runtime)


def test_another_target_repairs_as_well(runtime, tmp_path):
    point = POINTS["step 3b, before it installs"]
    prepare(runtime, point)
    cut_off(runtime, tmp_path, point, signal.SIGKILL)
    status, out, _ = runtime.zv("gpu-setup", "cpu", env=runtime.variables())
    assert status == 0, out
    assert runtime.session_runs_on() == "onnxruntime"
    assert GPU not in runtime.distributions()
    # The one after it finds all in order and says nothing of the past.
    assert "already installed, no conflicts." in runtime.run("gpu-setup", "cpu")[1]


def test_a_verification_alone_leaves_no_note(runtime, tmp_path):
    runtime.have("onnxruntime")
    reached = tmp_path / "reached"
    (runtime.site / "onnxruntime" / "__init__.py").write_text(
        f"import time\nopen({str(reached)!r}, 'w')\ntime.sleep(600)"
    )
    process = runtime.zv.popen("gpu-setup", "cpu", env=runtime.variables(), start_new_session=True)
    wait_until(lambda: reached.exists() or process.poll() is not None)
    os.killpg(process.pid, signal.SIGINT)
    out, err = process.communicate(timeout=60)
    assert process.returncode == 1
    assert out.decode().endswith("\nOperation cancelled.\n")
    assert err == b""


def test_the_terminals_ctrl_c_reaches_the_installer_once(runtime, tmp_path):
    """A second one would break off what it does to undo its work."""
    counted = tmp_path / "counted"
    installer = runtime.site / "pip" / "__main__.py"
    installer.unlink()  # it is a link to the template's
    installer.write_text(
        "import signal, time\n"
        "seen = []\n"
        "signal.signal(signal.SIGINT, lambda *_: seen.append(1))\n"
        "print('ready', flush=True)\n"
        f"open({str(counted)!r}, 'w').close()\n"
        "while not seen: time.sleep(0.01)\n"
        "time.sleep(0.6)\n"
        f"open({str(counted)!r}, 'w').write(str(len(seen)))\n"
        "raise SystemExit(1)\n"
    )
    child, terminal = pty.fork()
    if child == 0:
        environment = runtime.zv.environment(**runtime.variables())
        os.execve(EXECUTABLE, [str(EXECUTABLE), "gpu-setup", "cpu"], environment)
    wait_until(counted.exists)
    os.write(terminal, b"\x03")
    out = b""
    while chunk := read_terminal(terminal):
        out += chunk
    os.close(terminal)
    _, status = os.waitpid(child, 0)
    assert os.waitstatus_to_exitcode(status) == 1
    assert b"\r\nOperation cancelled.\r\n" in out
    assert counted.read_text() == "1"


def read_terminal(terminal: int) -> bytes:
    try:
        return os.read(terminal, 4096)
    except OSError:  # Linux says so when the other side is closed
        return b""
