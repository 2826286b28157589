"""The executable with the real engine package, and servers that it starts."""

import contextlib
import os
import signal
import subprocess
import sys
from pathlib import Path

import pytest

sys.path.insert(0, str(Path(__file__).parent))
sys.path.insert(0, str(Path(__file__).parents[2] / "engine" / "server"))

from real_user import PYTHON, User

DRAW_CAR = """
import sys
from PIL import Image, ImageDraw, ImageFilter, ImageFont

image = Image.linear_gradient("L").resize((960, 640)).convert("RGB")
draw = ImageDraw.Draw(image)
draw.rounded_rectangle((180, 120, 780, 560), 60, fill=(38, 52, 92))
draw.rounded_rectangle((360, 410, 600, 470), 6, fill=(245, 245, 240), outline=(20, 20, 20), width=3)
font = ImageFont.load_default(size=46)
draw.text((480, 440), "BDK 4827", fill=(15, 15, 20), font=font, anchor="mm")
image.filter(ImageFilter.GaussianBlur(0.8)).save(sys.argv[1], "JPEG", quality=92)
"""


@pytest.fixture
def user(tmp_path):
    made = User(tmp_path)
    yield made
    made.end_all()


@pytest.fixture(scope="module")
def service(tmp_path_factory):
    """A user with one running server, for tests that leave it as it was."""
    made = User(tmp_path_factory.mktemp("service"))
    made.port, made.pid = made.start()
    yield made
    made.end_all()


@pytest.fixture(scope="session")
def car_photo(tmp_path_factory) -> Path:
    """A drawn car whose plate the real engine reads."""
    path = tmp_path_factory.mktemp("photo") / "car.jpg"
    subprocess.run([PYTHON, "-c", DRAW_CAR, str(path)], check=True)
    return path


@pytest.fixture
def spawn():
    """Start programs that are gone when the test ends."""
    started = []

    def start(process: subprocess.Popen) -> subprocess.Popen:
        started.append(process)
        return process

    yield start
    for process in started:
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGKILL)
        process.wait()
