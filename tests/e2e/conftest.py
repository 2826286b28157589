"""Fixtures of all end-to-end tests."""

import sys
from pathlib import Path

import pytest

sys.path.insert(0, str(Path(__file__).parent))  # for the modules that the tests share

from program import Program


@pytest.fixture
def zv(tmp_path: Path) -> Program:
    return Program(tmp_path)
