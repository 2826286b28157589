"""Puts the repository on the path, and offers one font that Pillow carries."""

import sys
from pathlib import Path

import pytest
from PIL import ImageFont

sys.path.insert(0, str(Path(__file__).resolve().parents[2]))


@pytest.fixture(scope="session")
def font_folder(tmp_path_factory) -> Path:
    folder = tmp_path_factory.mktemp("fonts")
    (folder / "LiberationSans-Bold.ttf").write_bytes(ImageFont.load_default(40).font_bytes)
    return folder


@pytest.fixture(scope="session")
def fonts(font_folder) -> dict:
    from training.fonts import catalogue

    return catalogue(font_folder)
