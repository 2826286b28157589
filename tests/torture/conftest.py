"""Finds what these tests share with the end-to-end tests, and leaves out what cannot run here."""

import os
import shutil
import sys
from pathlib import Path

import pytest

sys.path.insert(0, str(Path(__file__).parents[1] / "e2e"))
sys.path.insert(0, str(Path(__file__).parent))

from faults import Torturer, build_shim
from stage import COMMANDS, Stage


@pytest.fixture(scope="session")
def shim(tmp_path_factory: pytest.TempPathFactory) -> Path:
    return build_shim(tmp_path_factory.mktemp("shim"))


@pytest.fixture(scope="module", params=list(COMMANDS))
def torturer(request, shim: Path, tmp_path_factory: pytest.TempPathFactory) -> Torturer:
    if not shutil.which("strace"):
        pytest.skip("strace is not installed")
    if "asan" in os.environ.get("ZV_ANPR_EXE", ""):
        pytest.skip("the sanitizers do not bear such faults themselves")
    folder = tmp_path_factory.mktemp("torture")
    return Torturer(Stage(folder / request.param, request.param), shim)
