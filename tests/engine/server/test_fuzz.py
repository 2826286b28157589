"""Random requests made from the server's own description never make it fail."""

import subprocess
import sys
from pathlib import Path

import pytest
from conftest import running

# The description cannot say what makes bytes a photo, nor which texts are regions.
NOT_CHECKED = "positive_data_acceptance"


@pytest.fixture
def server(tmp_path):
    """One of its own: random requests leave it as they like."""
    with running(tmp_path) as made:
        yield made


def test_no_request_that_fits_the_description_makes_the_server_fail(server):
    program = Path(sys.executable).with_name("schemathesis")
    done = subprocess.run(
        [program, "run", f"{server.url}/openapi.json", "--checks", "all",
         "--exclude-checks", NOT_CHECKED,
         "--max-examples", "15", "--seed", "17", "--mode", "all", "--workers", "1",
         "--phases", "coverage,fuzzing", "--generation-database", "none"],
        text=True, capture_output=True, timeout=120, check=False,
        env={**server.home.environment, "NO_COLOR": "1"},
    )  # fmt: skip
    assert done.returncode == 0, done.stdout[-6000:]
    assert server.client().get("/api/health").json()["errors"] == 0
    assert "Traceback" not in server.home.log()
