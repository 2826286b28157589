"""One photo."""

import sys
from pathlib import Path

import pytest

sys.path.insert(0, str(Path(__file__).parent))


@pytest.fixture
def car(zv):
    (zv.folder / "car.jpg").touch()
    return zv.folder / "car.jpg"
