"""What the tests of reading share: one photo, whose content nobody looks at."""

import pytest


@pytest.fixture
def car(zv):
    path = zv.folder / "car.jpg"
    path.touch()
    return path
