"""An engine that tells its process id and hangs."""

from processes import wait_until


def engine_pid(zv) -> int:
    path = zv.folder / "pid"
    wait_until(lambda: path.exists() and path.read_text())
    return int(path.read_text())


HANG = """
import os, time
def answer(path):
    with open("pid.new", "w") as file: file.write(str(os.getpid()))
    os.rename("pid.new", "pid")
    {hang}
"""
