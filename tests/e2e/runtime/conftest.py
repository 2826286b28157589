"""Fresh virtual environments with the real installer, and a wheel folder instead of an index."""

import os
import shutil
import subprocess
import sys
import venv
import zipfile
from pathlib import Path

import pytest
import runtime_wheels
from gpu_machine import Environment

RULE = "=" * 50
UNTOUCHED = ("pip", "setuptools")


@pytest.fixture(scope="session")
def template(tmp_path_factory: pytest.TempPathFactory) -> Path:
    """Made once; tests get copies. A copy works in its new place when started by its path."""
    folder = tmp_path_factory.mktemp("template") / "venv"
    venv.create(folder, with_pip=True, symlinks=True)
    return folder


class RuntimeEnvironment:
    """One virtual environment, the wheels on offer there, and gpu-setup in it."""

    def __init__(self, zv, template: Path, folder: Path) -> None:
        self.zv = zv
        self.folder = folder / "venv"
        shutil.copytree(template, self.folder, symlinks=True, copy_function=linked)
        self.python = str(self.folder / "bin" / "python")
        self.site = next(self.folder.glob("lib/python*/site-packages"))
        self.links = folder / "links"
        self.links.mkdir()
        self.cuda_problem(None)

    def offer(self, name: str, **options) -> Path:
        return runtime_wheels.runtime_wheel(self.links, name, **options)

    def have(self, *names: str) -> None:
        """Installed already, in this order; unpacking a wheel is all that installing it means."""
        for name in names:
            wheel = runtime_wheels.runtime_wheel(self.links, name)
            zipfile.ZipFile(wheel).extractall(self.site)

    def cuda_problem(self, problem: str | None, before: str = "") -> None:
        text = f"def cuda_runtime_problem():\n    {before or 'pass'}\n    return {problem!r}\n"
        self.zv.engine_file("utils.py", text)

    def variables(self, **more: str) -> dict[str, str]:
        return {
            "ZV_ANPR_PYTHON": self.python,
            "PIP_NO_INDEX": "1",
            "PIP_FIND_LINKS": str(self.links),
            "PIP_DISABLE_PIP_VERSION_CHECK": "1",
            "PIP_ROOT_USER_ACTION": "ignore",
            "PIP_CONFIG_FILE": os.devnull,
            **more,
        }

    def run(self, *words: str, **env: str) -> tuple[int, str]:
        status, out, err = self.zv(*words, env=self.variables(**env))
        assert err == ""
        return status, out

    def script(self, text: str) -> str:
        environment = self.zv.environment(**self.variables())
        child = subprocess.run(
            [self.python, "-c", text], env=environment, capture_output=True, text=True, check=True
        )
        return child.stdout.strip()

    def distributions(self) -> dict[str, str]:
        """What the real installer says is there, beside itself."""
        listing = self.script(
            "from importlib.metadata import distributions as all\n"
            "for one in all(): print(one.metadata['Name'], one.version)"
        )
        pairs = [line.split() for line in listing.splitlines()]
        return {name: version for name, version in pairs if name not in UNTOUCHED}

    def session_runs_on(self) -> str:
        return self.script("import onnxruntime; print(onnxruntime.InferenceSession().run())")

    def files(self) -> dict[str, bytes]:
        """Every file of the environment that is not the installer's own or compiled."""
        paths = [path for path in self.site.rglob("*") if path.is_file() and path.suffix != ".pyc"]
        relative = {str(path.relative_to(self.site)): path for path in paths}
        return {n: p.read_bytes() for n, p in relative.items() if not n.startswith(UNTOUCHED)}

    def title(self, target: str) -> str:
        return f"\nZelvoran ANPR — GPU Setup ({target})\n{RULE}\n"

    def pip(self, *words: str) -> str:
        return f"  → {self.python} -m pip {' '.join(words)}\n"


def linked(source: str, target: str) -> None:
    try:
        os.link(source, target)
    except OSError:
        shutil.copy2(source, target)


@pytest.fixture
def runtime(zv, template: Path, tmp_path: Path) -> RuntimeEnvironment:
    if sys.platform != "linux":
        pytest.skip("the targets that exist here are others")
    return RuntimeEnvironment(zv, template, tmp_path)


@pytest.fixture
def environment(zv) -> Environment:
    return Environment(zv)
