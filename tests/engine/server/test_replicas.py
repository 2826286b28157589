"""Three servers behind nginx; one is killed and one restarted while clients go on sending."""

import contextlib
import shutil
import signal
import subprocess
import threading
import time
from collections.abc import Iterator
from pathlib import Path

import httpx
import psutil
import pytest
from conftest import Home, Server, upload
from processes import free_port, wait_until

pytestmark = pytest.mark.skipif(not shutil.which("nginx"), reason="needs nginx on PATH")

TOKEN = "one-token-for-all-replicas-of-this-service"
CLIENTS = 3
START_SECONDS = 300
NGINX = """
daemon off; user root; worker_processes 1; pid {folder}/nginx.pid; error_log {folder}/error.log;
events {{ worker_connections 256; }}
http {{
  access_log off; client_max_body_size 20m;
  client_body_temp_path {folder}/body; proxy_temp_path {folder}/proxy;
  fastcgi_temp_path {folder}/f; uwsgi_temp_path {folder}/u; scgi_temp_path {folder}/s;
  upstream replicas {{ {servers} }}
  server {{
    listen 127.0.0.1:{port};
    location / {{
      proxy_pass http://replicas;
      proxy_set_header Host 127.0.0.1;
      proxy_set_header X-Forwarded-For $proxy_add_x_forwarded_for;
      # Reading a photo changes nothing, so it may be asked of another replica.
      proxy_next_upstream error timeout http_503 non_idempotent;
    }}
  }}
}}
"""


@pytest.fixture
def replicas(tmp_path: Path) -> Iterator[list[Server]]:
    """Yield servers that share the token and nothing else."""
    homes = []
    try:
        for number in range(3):
            folder = tmp_path / f"replica-{number}"
            folder.mkdir()
            homes.append(Home(folder))
            homes[-1].configure(limits={"start_seconds": START_SECONDS})
            token = homes[-1].config_dir / "api_token"
            token.touch(mode=0o600)
            token.write_text(TOKEN)
        yield started(homes, [free_port() for _ in homes])
    finally:
        for home in homes:
            home.kill_all()


def started(homes: list[Home], ports: list[int]) -> list[Server]:
    """Start a server per home, all at the same time."""
    commands = [
        home.command("start_server", daemon=True, threads=1, port=port)
        for home, port in zip(homes, ports, strict=True)
    ]
    starting = [
        subprocess.Popen(command, env=home.environment)
        for command, home in zip(commands, homes, strict=True)
    ]
    assert [process.wait(START_SECONDS) for process in starting] == [0] * len(homes)
    return [Server(home, port) for home, port in zip(homes, ports, strict=True)]


@contextlib.contextmanager
def balancer(folder: Path, servers: list[Server]) -> Iterator[str]:
    port = free_port()
    lines = " ".join(f"server 127.0.0.1:{s.port} max_fails=1 fail_timeout=1s;" for s in servers)
    config = folder / "nginx.conf"
    config.write_text(NGINX.format(folder=folder, port=port, servers=lines))
    process = subprocess.Popen(["nginx", "-p", str(folder), "-c", str(config)])
    try:
        yield f"http://127.0.0.1:{port}"
    finally:
        process.terminate()
        process.wait()


class Clients:
    """Send a photo each, one after the other, and keep every answer's status."""

    def __init__(self, url: str, photo: bytes) -> None:
        self._url, self._photo = url, photo
        self._end = threading.Event()
        self.statuses: list[int | str] = []
        self._threads = [threading.Thread(target=self._send) for _ in range(CLIENTS)]

    def __enter__(self) -> "Clients":
        for thread in self._threads:
            thread.start()
        return self

    def __exit__(self, *_: object) -> None:
        self._end.set()
        for thread in self._threads:
            thread.join()

    def go_on(self, requests: int = 3 * CLIENTS) -> None:
        wanted = len(self.statuses) + requests
        wait_until(lambda: len(self.statuses) >= wanted, START_SECONDS)

    def _send(self) -> None:
        headers = {"X-ZV-ANPR-Token": TOKEN}
        with httpx.Client(base_url=self._url, headers=headers, timeout=60) as client:
            while not self._end.is_set():
                try:
                    answer = upload(client, self._photo)
                    read = answer.status_code == 200 and answer.json()["results"]
                    self.statuses.append(200 if read else answer.text)
                except httpx.HTTPError as error:
                    self.statuses.append(repr(error))


def served(server: Server) -> int:
    with server.client() as client:
        return client.get("/api/health").json()["requests_served"]


def kill(server: Server) -> None:
    """Kill the server with all that it started, as a lost machine would."""
    process = psutil.Process(server.pid)
    for one in [*process.children(recursive=True), process]:
        with contextlib.suppress(psutil.NoSuchProcess):
            one.send_signal(signal.SIGKILL)


def test_no_request_fails_when_a_replica_is_killed_and_one_restarted(
    replicas: list[Server], tmp_path: Path, plate_photo: bytes
):
    killed, restarted, steady = replicas
    with balancer(tmp_path, replicas) as url, Clients(url, plate_photo) as clients:
        clients.go_on()
        assert all(served(server) for server in replicas), "every replica has its share"
        kill(killed)
        clients.go_on()
        restart = restarted.home.command("restart_server")
        subprocess.run(restart, env=restarted.home.environment, check=True)
        clients.go_on()
        started([killed.home], [killed.port])
        time.sleep(1.1)  # after which nginx asks a replica again that had failed
        before = served(restarted), served(killed)
        clients.go_on(6 * CLIENTS)
        assert served(restarted) > before[0] and served(killed) > before[1]
    assert set(clients.statuses) == {200}
    assert served(steady)
