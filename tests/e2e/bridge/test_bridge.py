"""The engine host: finding it, order of output, Ctrl+C, and whichever side dies first."""

import os
import signal
import subprocess
import sys
import time

import pytest
from processes import alive, wait_until


@pytest.fixture
def car(zv):
    (zv.folder / "car.jpg").touch()
    return zv.folder / "car.jpg"


def engine_pid(zv) -> int:
    path = zv.folder / "pid"
    wait_until(lambda: path.exists() and path.read_text())
    return int(path.read_text())


HANG = """
import os, time
def answer(path):
    with open("pid.new", "w") as file: file.write(str(os.getpid()))
    os.rename("pid.new", "pid")
    {hang}
"""


# --- finding the interpreter


def test_the_variable_comes_first(zv):
    python = zv.folder / "my python"
    python.write_text(f'#!/bin/sh\necho used >&2\nexec {sys.executable} "$@"\n')
    python.chmod(0o755)
    status, out, err = zv("version", env={"ZV_ANPR_PYTHON": str(python)})
    assert (status, out, err) == (0, "Zelvoran ANPR CLI v3.2.1\n", "used\n")


def test_a_variable_that_names_nothing_is_told_and_passed_over(zv):
    status, out, err = zv("version", env={"ZV_ANPR_PYTHON": "/nowhere/python"})
    assert (status, out) == (0, "Zelvoran ANPR CLI v3.2.1\n")
    assert err.startswith("zv-anpr: ZV_ANPR_PYTHON names no program: /nowhere/python; using ")


@pytest.mark.parametrize("variable", ["VIRTUAL_ENV", "CONDA_PREFIX"])
def test_an_active_environment_comes_before_the_path(zv, variable):
    (zv.folder / "env" / "bin").mkdir(parents=True)
    python = zv.folder / "env" / "bin" / "python3"
    python.write_text(f'#!/bin/sh\necho used >&2\nexec {sys.executable} "$@"\n')
    python.chmod(0o755)
    changes = {"ZV_ANPR_PYTHON": None, "VIRTUAL_ENV": None, "CONDA_PREFIX": None}
    result = zv("version", env={**changes, variable: str(zv.folder / "env")})
    assert result.err == "used\n"


def test_the_interpreter_beside_the_real_executable_is_used(zv, tmp_path):
    from program import EXECUTABLE

    folder = tmp_path / "bin"
    folder.mkdir()
    (folder / "zv-anpr").write_bytes(EXECUTABLE.read_bytes())
    (folder / "zv-anpr").chmod(0o755)
    (folder / "python").write_text(f'#!/bin/sh\necho beside >&2\nexec {sys.executable} "$@"\n')
    (folder / "python").chmod(0o755)
    link = tmp_path / "link"
    link.symlink_to(folder / "zv-anpr")
    environment = zv.environment(ZV_ANPR_PYTHON=None, VIRTUAL_ENV=str(tmp_path / "no"))
    run = subprocess.run(
        [link, "version"], env=environment, capture_output=True, text=True, check=True
    )
    assert (run.stdout, run.stderr) == ("Zelvoran ANPR CLI v3.2.1\n", "beside\n")


def test_no_interpreter_anywhere_lists_every_place(zv):
    places = {
        "ZV_ANPR_PYTHON": "/a/python",
        "VIRTUAL_ENV": "/b",
        "CONDA_PREFIX": "/c",
        "PATH": "/d",
    }
    status, out, err = zv("version", env=places)
    assert status == 1
    assert out == ""
    assert len(err.splitlines()) == 1
    for place in [
        "/a/python",
        "/b/bin/python3",
        "/c/bin/python",
        "PATH (python3)",
        "PATH (python)",
    ]:
        assert place in err


# --- loading the engine


@pytest.mark.parametrize(
    "file, text, missing",
    [
        (
            "__init__.py",
            "zv_anpr_detector_v17 = zv_anpr_ocr_v17 = 1",
            "zelvoran_anpr_from_image_file",
        ),
        ("_version.py", "", "__version__"),
        ("region_aliases.py", "def to_internal_region(r): return r", "to_api_region"),
        ("region_aliases.py", "import no_such_module", "no_such_module"),
        ("__init__.py", "raise RuntimeError('broken build')", "broken build"),
        ("__init__.py", "syntax error", "SyntaxError"),
    ],
)
@pytest.mark.parametrize("words", [["version"], ["read", "car.jpg"]])
def test_a_missing_name_keeps_every_command_from_starting(zv, car, file, text, missing, words):
    zv.engine_file(file, text)
    status, out, err = zv(*words)
    assert status == 1
    assert out == ""
    assert missing in err
    assert "Traceback" not in err


def test_an_absent_engine_is_told_with_what_to_do(zv):
    python = zv.folder / "python"
    python.write_text(f'#!/bin/sh\nexec {sys.executable} -S "$@"\n')  # -S: no installed packages
    python.chmod(0o755)
    status, out, err = zv("version", env={"PYTHONPATH": "", "ZV_ANPR_PYTHON": str(python)})
    assert (status, out) == (1, "")
    assert "No module named 'zelvoran_anpr'" in err
    assert f"{python} -m pip install zelvoran-anpr" in err


def test_an_interpreter_that_is_none_is_told(zv):
    status, out, err = zv("version", env={"ZV_ANPR_PYTHON": "/bin/false"})
    assert (status, out) == (1, "")
    assert "/bin/false ended (exit status 1) before it answered" in err


@pytest.mark.parametrize(
    "hello",
    [
        '{"protocol": 1, "executable": "", "version": "1", "names": null}',
        '{"protocol": 1, "executable": {"$bytes": "zz"}, "version": "1", "names": [1]}',
        '{"protocol": 1, "executable": "", "version": "1", "names": ["one"]}',
        '{"protocol": "1"}',
        "[1]",
        "Python 2.7",
    ],
)
def test_a_program_that_answers_something_else_is_told_in_one_line(zv, hello):
    python = zv.folder / "python"
    python.write_text(f"#!/bin/sh\nprintf '%s\\n' '{hello}' >&4\ncat <&3\n")
    python.chmod(0o755)
    status, out, err = zv("version", env={"ZV_ANPR_PYTHON": str(python)})
    assert (status, out) == (1, "")
    assert "the engine process sent something that is no answer of its bridge" in err
    assert len(err.splitlines()) == 1


def test_file_names_are_whole_where_the_locale_is_not_utf8(zv):
    (zv.folder / "京ü.jpg").touch()
    zv.script("import os\ndef answer(path):\n    print(os.stat(path).st_size, path[-6:])\n")
    env = {"LC_ALL": "C", "PYTHONUTF8": "0", "PYTHONCOERCECLOCALE": "0"}
    assert "京ü.jpg: 0 京ü.jpg\nNo plates\n" in zv("京ü.jpg", env=env).out


def test_the_users_environment_reaches_the_engine_unchanged(zv, car):
    zv.script(
        "import os, sys\n"
        "def answer(path):\n"
        "    print(os.getcwd(), os.environ['HOME'], os.environ['MARK'], sys.flags.isolated,\n"
        "          sys.flags.no_site, '' in sys.path, sys.argv)\n"
    )
    out = zv("car.jpg", env={"MARK": "42"}).out
    assert f"{zv.folder} {zv.home} 42 0 0 False ['zv-anpr']\n" in out


def test_modules_in_the_working_directory_are_not_taken_for_the_engines(zv, car):
    (zv.folder / "json.py").write_text("raise RuntimeError('hijacked')")
    (zv.folder / "zelvoran_anpr.py").write_text("raise RuntimeError('hijacked')")
    assert zv("car.jpg").out.endswith("Total: 0 plates from 1 images\n")


# --- order of output


def test_engine_text_keeps_its_place_when_piped(zv, car):
    zv.script(
        "import os, sys, ctypes\n"
        "libc = ctypes.CDLL(None)\n"
        "def answer(path):\n"
        "    print('from python')\n"
        "    libc.printf(b'from C\\n')\n"
        "    return {}\n"
    )
    assert "car.jpg: from python\nfrom C\nNo plates\n" in zv("car.jpg").out


def test_text_before_the_first_answer_does_not_disturb(zv, tmp_path):
    (tmp_path / "engine" / "sitecustomize.py").write_text("print('hello from site', flush=True)\n")
    status, out, _ = zv("version")
    assert (status, out) == (0, "hello from site\nZelvoran ANPR CLI v3.2.1\n")


def test_an_engine_that_reads_its_standard_input_gets_ours(zv, car):
    zv.script("import sys\ndef answer(path):\n    print(sys.stdin.read(), end=' ')\n")
    assert "car.jpg: typed No plates\n" in zv("car.jpg", stdin="typed").out


@pytest.mark.parametrize("words", [["version"], ["car.jpg"]])
def test_what_the_engine_registered_for_its_end_is_run(zv, car, words):
    zv.engine_file(
        "_version.py",
        "import atexit\n"
        "__version__ = '3.2.1'\n"
        "atexit.register(lambda: print('ended', flush=True))\n",
    )
    assert "ended\n" in zv(*words).out.splitlines(keepends=True)


# --- crashes, hangs, exits


@pytest.mark.parametrize(
    "crash, told",
    [
        ("os._exit(3)", "exit status 3"),
        ("os.kill(os.getpid(), 9)", "signal 9"),
        ("os.abort()", "signal 6"),
    ],
)
def test_an_engine_that_dies_is_told_with_its_state(zv, car, crash, told):
    zv.script(f"import os\ndef answer(path):\n    {crash}\n")
    _, out, err = zv("car.jpg")
    assert f"car.jpg: Error: the engine process {sys.executable} ended ({told})" in out
    assert out.endswith("Total: 0 plates from 1 images\n")
    assert "Traceback" not in out + err


def test_images_after_a_crash_of_the_engine_are_still_read(zv, car):
    (zv.folder / "b.jpg").touch()
    zv.script("import os\ndef answer(path):\n    if 'car' in path: os._exit(3)\n    return {}\n")
    out = zv("car.jpg", "b.jpg").out
    assert "car.jpg: Error: the engine process" in out
    assert "\nb.jpg: No plates\n" in out


def test_an_engine_that_ends_the_process_passes_its_status_on(zv, car):
    zv.script("import sys\ndef answer(path):\n    sys.exit(7)\n")
    assert zv("car.jpg").status == 7


@pytest.mark.parametrize(
    "code, status, told",
    [("None", 0, ""), ("False", 0, ""), ("True", 1, ""), ("'bye'", 1, "bye\n"),
     ("(1, 2)", 1, "(1, 2)\n")],
)  # fmt: skip
def test_an_engine_may_end_the_process_with_what_is_no_number(zv, car, code, status, told):
    zv.script(f"import sys\ndef answer(path):\n    sys.exit({code})\n")
    assert (zv("car.jpg").status, zv("car.jpg").err) == (status, told)


def test_ctrl_c_from_the_terminal_cancels(zv, car):
    zv.script(HANG.format(hang="time.sleep(60)"))
    process = zv.popen("car.jpg", start_new_session=True)
    pid = engine_pid(zv)
    os.killpg(process.pid, signal.SIGINT)
    out, err = process.communicate(timeout=20)
    assert process.returncode == 1
    assert out.decode().endswith("car.jpg: \nOperation cancelled.\n")
    assert b"Traceback" not in err
    assert not alive(pid)


def test_an_interrupt_that_reaches_only_us_is_passed_on(zv, car):
    zv.script(HANG.format(hang="time.sleep(60)"))
    process = zv.popen("car.jpg")
    pid = engine_pid(zv)
    process.send_signal(signal.SIGINT)
    out, _ = process.communicate(timeout=20)
    assert (process.returncode, out.decode().splitlines()[-1]) == (1, "Operation cancelled.")
    assert not alive(pid)


def test_a_second_ctrl_c_kills_an_engine_that_does_not_listen(zv, car):
    zv.script(
        HANG.format(
            hang="import signal; signal.signal(signal.SIGINT, signal.SIG_IGN)\n"
            "    open('deaf', 'w').close()\n    time.sleep(60)"
        )
    )
    process = zv.popen("car.jpg", start_new_session=True)
    pid = engine_pid(zv)
    wait_until((zv.folder / "deaf").exists)
    os.killpg(process.pid, signal.SIGINT)
    time.sleep(0.5)
    assert process.poll() is None
    os.killpg(process.pid, signal.SIGINT)
    out, _ = process.communicate(timeout=20)
    assert (process.returncode, out.decode().splitlines()[-1]) == (1, "Operation cancelled.")
    assert not alive(pid)


@pytest.mark.parametrize("number", [signal.SIGKILL, signal.SIGTERM])
def test_no_engine_stays_behind_when_we_are_killed(zv, car, number):
    zv.script(HANG.format(hang="time.sleep(60)"))
    process = zv.popen("car.jpg")
    pid = engine_pid(zv)
    process.send_signal(number)
    process.communicate(timeout=20)
    wait_until(lambda: not alive(pid), 10)


def test_no_engine_that_is_still_loading_stays_behind(zv):
    zv.engine_file("__init__.py", HANG.format(hang="time.sleep(60)") + "answer('')\n")
    process = zv.popen("version")
    pid = engine_pid(zv)
    process.kill()
    process.communicate(timeout=20)
    wait_until(lambda: not alive(pid), 10)


# --- engines that neither answer nor end


def test_an_engine_that_hangs_up_and_lives_is_ended_and_replaced(zv, car):
    (zv.folder / "b.jpg").touch()
    zv.script(
        HANG.format(hang="")
        + "    if 'b.jpg' not in path:\n        os.close(4)\n        time.sleep(60)\n"
        + "    return {}\n"
    )
    out = zv("car.jpg", "b.jpg").out
    told = f"the engine process {sys.executable} closed its pipe before it answered"
    assert f"car.jpg: Error: {told}\n" in out
    assert "\nb.jpg: No plates\n" in out
    assert not alive(engine_pid(zv))


HELLO = (
    r"""printf '{"protocol": 1, "executable": {"$bytes": "2f"}, "version": "1","""
    r""" "names": [1, 2, 3, 4, 5, 6]}\n' >&4"""
)


def fake_engine(zv, *lines):
    """An interpreter that is none."""
    path = zv.folder / "fake"
    path.write_text("\n".join(["#!/bin/sh", *lines]) + "\n")
    path.chmod(0o755)
    return {"ZV_ANPR_PYTHON": str(path)}


@pytest.mark.parametrize(
    ("lines", "told"),
    [
        (["exec 4>&-", "exec sleep 60"], "closed its pipe before it answered"),
        (["sleep 60 <&- >&- 2>&- 3<&- &", "exit 3"], "ended (exit status 3) before it answered"),
    ],
)
def test_an_engine_that_never_says_hello(zv, lines, told):
    status, out, err = zv("version", env=fake_engine(zv, *lines))
    assert (status, out) == (1, "")
    assert told in err


def test_an_engine_that_takes_no_requests(zv, car):
    env = fake_engine(zv, HELLO, "exec 3<&-", "exec sleep 60")
    assert "closed its pipe before it answered\n" in zv("car.jpg", env=env).out


def test_an_engine_that_does_not_end_is_ended(zv):
    env = fake_engine(zv, "trap '' TERM INT", "echo $$ > pid", HELLO, "exec sleep 60")
    assert tuple(zv("version", env=env)) == (0, "Zelvoran ANPR CLI v1\n", "")
    assert not alive(engine_pid(zv))


# --- what our own parent did to signals


@pytest.mark.parametrize("held", [{signal.SIGCHLD}, set(signal.Signals)])
def test_signals_held_back_by_the_parent_hold_nothing_up(zv, car, held):
    process = zv.popen("car.jpg", preexec_fn=lambda: signal.pthread_sigmask(signal.SIG_BLOCK, held))
    out, err = process.communicate(timeout=60)
    assert (process.returncode, err) == (0, b"")
    assert out.endswith(b"Total: 0 plates from 1 images\n")


def test_an_ignored_interrupt_stays_ignored(zv, car):
    """As `nohup` and the background jobs of scripts are started."""
    zv.script(HANG.format(hang="time.sleep(1)\n    return {}"))
    process = zv.popen(
        "car.jpg",
        preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_IGN),
        start_new_session=True,
    )
    engine_pid(zv)
    os.killpg(process.pid, signal.SIGINT)
    out, err = process.communicate(timeout=60)
    assert (process.returncode, err) == (0, b"")
    assert out.endswith(b"car.jpg: No plates\n\nTotal: 0 plates from 1 images\n")


# --- where the output goes


def test_a_reader_that_goes_away_ends_the_run_quietly(zv, car):
    process = zv.popen("read", *["car.jpg"] * 200)
    process.stdout.close()
    _, err = process.communicate(timeout=20)
    assert err == b""
    assert process.returncode in (-signal.SIGPIPE, 0)


def test_a_full_disk_under_the_output_is_told_and_the_work_done(zv, car):
    with open("/dev/full", "w") as full:
        process = zv.popen("car.jpg", "--json", "r.json", stdout=full)
        _, err = process.communicate(timeout=20)
    assert process.returncode == 1
    assert err == b"zv-anpr: cannot write to standard output: No space left on device\n"
    assert (zv.folder / "r.json").read_text() == "[]"


def test_closed_standard_output_spoils_no_file(zv, car):
    from program import EXECUTABLE

    run = subprocess.run(
        ["/bin/sh", "-c", '"$0" "$@" >&-', EXECUTABLE, "car.jpg", "--json", "r.json"],
        env=zv.environment(),
        cwd=zv.folder,
        stderr=subprocess.PIPE,
        text=True,
        check=False,
    )
    assert run.returncode == 1
    assert run.stderr == "zv-anpr: cannot write to standard output: Bad file descriptor\n"
    assert (zv.folder / "r.json").read_text() == "[]"
