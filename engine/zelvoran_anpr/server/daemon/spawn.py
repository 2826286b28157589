"""Starts the server as a process of its own that outlives whoever started it."""

import os
import subprocess
import sys

from ..config.paths import get_config_dir, log_path, make_private_dir
from ..config.settings import Settings


def spawn(settings: Settings, start_id: str, replaces: bool) -> subprocess.Popen:
    """Return the new process; what it prints goes to the log. Raises OSError.

    One that `replaces` another waits for a line on its standard input before it takes the port.
    """
    make_private_dir(log_path().parent)
    command = [sys.executable, "-m", "zelvoran_anpr.server.serve", "--detached"]
    command += ["--host", settings.server.host, "--port", str(settings.server.port)]
    command += ["--threads", str(settings.server.threads)]
    command += ["--config", settings.source] if settings.source else []
    command += ["--start-id", start_id, *(["--replaces"] if replaces else [])]
    with open(log_path(), "ab") as log:
        return subprocess.Popen(
            command,
            stdin=subprocess.PIPE if replaces else subprocess.DEVNULL,
            stdout=log,
            stderr=log,
            cwd=get_config_dir(),
            env=_environment(),
            close_fds=True,
            **_detach_arguments(),
        )


def _detach_arguments() -> dict:
    if sys.platform == "win32":
        flags = subprocess.CREATE_NEW_PROCESS_GROUP | subprocess.DETACHED_PROCESS
        return {"creationflags": flags}
    return {"start_new_session": True}


def _environment() -> dict[str, str]:
    # The server runs in another directory, where relative entries would mean something else.
    environment = dict(os.environ)
    paths = environment.get("PYTHONPATH")
    if paths:
        absolute = (os.path.abspath(path) for path in paths.split(os.pathsep))
        environment["PYTHONPATH"] = os.pathsep.join(absolute)
    return environment
