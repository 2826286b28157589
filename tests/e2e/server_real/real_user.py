"""A user who types `zv-anpr server ...` with the real engine package.

ZV_TEST_PYTHON names an interpreter that has the packages of the `server` extra.
"""

import json
import os
import subprocess
import sys
from pathlib import Path

from processes import free_port

ROOT = Path(__file__).resolve().parents[3]
EXECUTABLE = Path(os.environ.get("ZV_ANPR_EXE", ROOT / "build" / "release" / "zv-anpr"))
PYTHON = os.environ.get("ZV_TEST_PYTHON") or os.environ.get("ZV_ANPR_PYTHON") or sys.executable


class User:
    """One user with a home of their own, who types `zv-anpr server ...`."""

    def __init__(self, folder: Path) -> None:
        self.folder = folder / "work"
        self.config_dir = folder / "config"
        for path in (self.folder, self.config_dir, folder / "home"):
            path.mkdir()
        self.environment = {
            **os.environ,
            "HOME": str(folder / "home"),
            "PYTHONPATH": str(ROOT / "engine"),
            "ZELVORAN_CONFIG_DIR": str(self.config_dir),
            "ZV_ANPR_PYTHON": PYTHON,
        }
        self.configure()

    def configure(self, name: str = "server_config.yaml", **sections: dict) -> Path:
        """Write a configuration with the quicker detector; JSON is YAML."""
        server = {"detector_model": "320p_fp32", "threads": 2, **sections.pop("server", {})}
        path = self.config_dir / name
        path.write_text(json.dumps({"server": server, **sections}))
        return path

    def popen(self, *words: str) -> subprocess.Popen:
        command = [EXECUTABLE, "server", *words]
        return subprocess.Popen(
            command,
            cwd=self.folder,
            env=self.environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
            start_new_session=True,
        )

    def run(self, *words: str) -> subprocess.CompletedProcess:
        process = self.popen(*words)
        out, err = process.communicate(timeout=120)
        return subprocess.CompletedProcess(process.args, process.returncode, out, err)

    def __call__(self, *words: str) -> str:
        """Run a command that ends well; what it printed."""
        done = self.run(*words)
        assert (done.returncode, done.stderr) == (0, ""), done.stdout + done.stderr
        return done.stdout

    def start(self, *words: str, port: int | None = None) -> tuple[int, int]:
        """Start a background server; its port and process id."""
        chosen = port or free_port()
        out = self("start", "--daemon", "--port", str(chosen), *words)
        assert "✅ ANPR server started (PID: " in out
        return chosen, int(out.split("(PID: ")[1].split(")")[0])

    def log(self) -> Path:
        return self.config_dir / "logs" / "server.log"

    def end_all(self) -> None:
        self.run("stop", "--all", "--force")
