"""The engine host: finding it, loading the engine, and where the output of both goes."""

import signal
import subprocess
import sys

import pytest

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
