"""Who is at the other end of a connection, without a server."""

import socket
import subprocess
import sys

import pytest

if sys.platform != "linux":
    pytest.skip("elsewhere processes are looked at in another way", allow_module_level=True)

from zelvoran_anpr.server.peer.linux_program import Lookout

_BUSY_CALLER = """
import os, socket, sys
caller = socket.create_connection(("127.0.0.1", int(sys.argv[1])))
while True:
    files = [os.open("/dev/null", os.O_RDONLY) for _ in range(20)]
    for file in files:
        os.close(file)
"""


def test_a_program_that_opens_and_closes_files_meanwhile_is_seen():
    with socket.create_server(("127.0.0.1", 0)) as listener:
        program = [sys.executable, "-S", "-E", "-c", _BUSY_CALLER, str(listener.getsockname()[1])]
        with subprocess.Popen(program) as busy:
            try:
                ours, _ = listener.accept()
                ends = ours.getpeername(), ours.getsockname()
                assert all(Lookout().speaks_for_this_user(*ends) for _ in range(50))
            finally:
                busy.kill()
                ours.close()
