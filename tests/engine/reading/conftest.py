"""One pair of engine objects for all tests of reading."""

import sys
from pathlib import Path

import pytest

sys.path.insert(0, str(Path(__file__).parent))  # the tests draw with drawn_plates.py


@pytest.fixture(scope="session")
def detector():
    from zelvoran_anpr import zv_anpr_detector_v17

    return zv_anpr_detector_v17("640p_fp32", backend="cpu")


@pytest.fixture(scope="session")
def ocr():
    from zelvoran_anpr import zv_anpr_ocr_v17

    return zv_anpr_ocr_v17("fp32", "univ", backend="cpu")
