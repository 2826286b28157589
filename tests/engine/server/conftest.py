"""Real servers in processes of their own, with a home of their own."""

import contextlib
import json
import os
import signal
import socket
import subprocess
import sys
from pathlib import Path

import httpx
import psutil
import pytest
from dashboard_browser import browser, chromium, photo  # noqa: F401  fixtures of several files
from processes import alive, free_port

_MODULE = "zelvoran_anpr.zelvoran_anpr_server_daemon"
_CALL = f"import sys, json, {_MODULE} as d; getattr(d, sys.argv[1])(**json.loads(sys.argv[2]))"


class Home:
    """A user: a home, a configuration directory, and the environment that points to them."""

    def __init__(self, directory: Path) -> None:
        self.config_dir = directory / "zelvoran"
        self.config_dir.mkdir(mode=0o700)
        (directory / "home").mkdir()
        self.environment = {
            **os.environ,
            "HOME": str(directory / "home"),
            "ZELVORAN_CONFIG_DIR": str(self.config_dir),
        }
        self.configure()

    def configure(self, **sections: dict) -> None:
        """Write a configuration; the faster detector is chosen unless another one is."""
        sections["server"] = {"detector_model": "320p_fp32", **sections.get("server", {})}
        self.write_config(json.dumps(sections))

    def write_config(self, text: str) -> None:
        (self.config_dir / "server_config.yaml").write_text(text)

    def command(self, operation: str, **arguments) -> list[str]:
        return [sys.executable, "-c", _CALL, operation, json.dumps(arguments)]

    def call(self, operation: str, **arguments) -> subprocess.CompletedProcess:
        """Run one operation of the daemon module to its end, as the front end would."""
        return subprocess.run(
            self.command(operation, **arguments), env=self.environment, text=True,
            capture_output=True, timeout=100, check=False,
        )  # fmt: skip

    def value(self, operation: str):
        """Return what an operation without arguments returns."""
        import zelvoran_anpr.zelvoran_anpr_server_daemon as daemon

        with pytest.MonkeyPatch.context() as patch:
            patch.setenv("ZELVORAN_CONFIG_DIR", str(self.config_dir))
            return getattr(daemon, operation)()

    def start(self, **arguments) -> "Server":
        for _ in range(5):
            given = {"port": free_port(), **arguments}
            done = self.call("start_server", daemon=True, **given)
            if "is in use" not in done.stderr or "port" in arguments:
                break  # a free port may be taken by somebody else before the server has it
        assert done.returncode == 0, done.stdout + done.stderr
        return Server(self, given["port"])

    def token(self) -> str:
        return (self.config_dir / "api_token").read_text().strip()

    def log(self) -> str:
        return (self.config_dir / "logs" / "server.log").read_text()

    def kill_all(self) -> None:
        for record in (self.config_dir / "run").glob("server-*.json"):
            try:
                process = psutil.Process(int(record.stem.partition("-")[2]))
                if "zelvoran_anpr.server.serve" in process.cmdline():
                    process.kill()
            except psutil.NoSuchProcess:
                continue


class Server:
    """A running background server."""

    def __init__(self, home: Home, port: int) -> None:
        self.home = home
        self.port = port
        self.url = f"http://127.0.0.1:{port}"
        self.pid = next(s["pid"] for s in home.value("find_all_servers") if s["port"] == port)

    def client(self, **headers: str) -> httpx.Client:
        return httpx.Client(base_url=self.url, headers=headers, timeout=30, trust_env=False)

    def connect(self) -> socket.socket:
        return socket.create_connection(("127.0.0.1", self.port), timeout=20)

    def alive(self) -> bool:
        return alive(self.pid)


@pytest.fixture
def home(tmp_path):
    made = Home(tmp_path)
    yield made
    made.kill_all()


@contextlib.contextmanager
def running(directory: Path, threads: int = 2, **sections: dict):
    """A server of a user of its own while the block runs."""
    made = Home(directory)
    made.configure(**sections)
    try:
        yield made.start(threads=threads)
    finally:
        made.call("stop_server", force=True, stop_all=True)
        made.kill_all()


@pytest.fixture(scope="session")
def server(tmp_path_factory):
    """One server for all tests that leave it as it was."""
    with running(tmp_path_factory.mktemp("server")) as made:
        yield made


@pytest.fixture(scope="session")
def strict_server(tmp_path_factory):
    """A server with narrow limits, for clients and uploads that must not harm it."""
    limits = {"body_mb": 2, "megapixels": 4, "header_seconds": 1, "body_seconds": 2}
    with running(tmp_path_factory.mktemp("strict"), limits=limits) as made:
        yield made
        with made.client() as client:  # after all of them
            assert upload(client, jpeg()).status_code == 200


@pytest.fixture
def strict_client(strict_server):
    with strict_server.client() as made:
        yield made
        assert made.get("/readyz").status_code == 200  # whatever came before
        assert made.get("/api/health").json()["errors"] == 0


@pytest.fixture
def spawn():
    """Start processes that are gone when the test ends."""
    started = []

    def start(*arguments, **options) -> subprocess.Popen:
        started.append(subprocess.Popen(*arguments, **options))
        return started[-1]

    yield start
    for process in started:
        if process.poll() is None:
            process.send_signal(signal.SIGKILL)
        process.wait()


def jpeg(width: int = 640, height: int = 480) -> bytes:
    """Return a grey picture without a plate."""
    import io

    from PIL import Image

    stream = io.BytesIO()
    Image.new("RGB", (width, height), (90, 100, 110)).save(stream, "JPEG")
    return stream.getvalue()


def upload(client: httpx.Client, data: bytes, path: str = "/api/anpr", **fields: str):
    return client.post(path, files={"image": ("car.jpg", data, "image/jpeg")}, data=fields)


@pytest.fixture(scope="session")
def plate_photo() -> bytes:
    """Return a drawn street scene with one plate that the real engine reads."""
    import io

    from PIL import Image, ImageDraw, ImageFilter, ImageFont

    image = Image.linear_gradient("L").resize((960, 640)).convert("RGB")
    draw = ImageDraw.Draw(image)
    draw.rounded_rectangle((180, 120, 780, 560), 60, fill=(38, 52, 92))
    draw.rounded_rectangle((360, 410, 600, 470), 6, fill=(245, 245, 240), outline=(20, 20, 20),
                           width=3)  # fmt: skip
    draw.text((480, 440), "BDK 4827", fill=(15, 15, 20), font=ImageFont.load_default(size=46),
              anchor="mm")  # fmt: skip
    stream = io.BytesIO()
    image.filter(ImageFilter.GaussianBlur(0.8)).save(stream, "JPEG", quality=92)
    return stream.getvalue()
