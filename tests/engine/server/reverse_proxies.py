"""nginx and Caddy as they come from the system's archive, run as this user for one test."""

import contextlib
import os
import shutil
import socket
import subprocess
from collections.abc import Iterator
from pathlib import Path

import httpx
import pytest
from processes import wait_until

_NGINX = """
{user}
pid {folder}/pid;
daemon off;
events {{}}
http {{
  access_log off;
  client_body_temp_path {folder}/body;
  proxy_temp_path {folder}/proxy;
  fastcgi_temp_path {folder}/fastcgi;
  uwsgi_temp_path {folder}/uwsgi;
  scgi_temp_path {folder}/scgi;
  {server}
}}
"""


@contextlib.contextmanager
def running(command: list[str], url: str, folder: Path) -> Iterator[str]:
    """A proxy that answers under `url` while the block runs."""
    homes = {**os.environ, "XDG_CONFIG_HOME": str(folder), "XDG_DATA_HOME": str(folder)}
    with open(folder / "errors", "wb") as errors:
        process = subprocess.Popen(command, stdout=errors, stderr=errors, env=homes)
    try:
        wait_until(lambda: listens(url) or process.poll() is not None, 200)
        assert process.poll() is None, (folder / "errors").read_text()
        yield url
    finally:
        process.terminate()
        process.wait()


def listens(url: str) -> bool:
    with socket.socket() as probe:
        return probe.connect_ex(("127.0.0.1", httpx.URL(url).port)) == 0


def nginx(folder: Path, server_block: str, url: str):
    if not shutil.which("nginx"):
        pytest.skip("needs nginx")
    own = "user root;" if os.geteuid() == 0 else ""
    text = _NGINX.format(folder=folder, server=server_block, user=own)
    (folder / "nginx.conf").write_text(text)
    command = ["nginx", "-p", str(folder), "-c", str(folder / "nginx.conf"), "-e", "stderr"]
    return running(command, url, folder)


def caddy(folder: Path, text: str, url: str):
    if not shutil.which("caddy"):
        pytest.skip("needs caddy")
    (folder / "Caddyfile").write_text(text)
    command = ["caddy", "run", "--adapter", "caddyfile", "--config", str(folder / "Caddyfile")]
    return running(command, url, folder)
