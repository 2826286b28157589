"""Nothing leaves the machine: no connection beyond the loopback, no identity kept."""

import ast
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import pytest
import zelvoran_anpr
from processes import free_port

_LATEST_SECONDS = 14  # the runtime's own telemetry waits about ten
_READ = """
import sys, time, zelvoran_anpr as z
detector = z.zv_anpr_detector_v17("320p_fp32", backend="cpu")
z.zelvoran_anpr_from_image_file(detector, z.zv_anpr_ocr_v17("fp32", "univ"), sys.argv[1])
time.sleep(float(sys.argv[2]))
"""
_SERVE = """
import subprocess, sys, time, urllib.request
port, seconds, photo = sys.argv[1:4]
server = subprocess.Popen(
    [sys.executable, "-m", "zelvoran_anpr.server.serve", "--port", port, "--threads", "1"])
body = (b'--x\\r\\nContent-Disposition: form-data; name="image"; filename="a.jpg"\\r\\n\\r\\n'
        + open(photo, "rb").read() + b"\\r\\n--x--\\r\\n")
request = urllib.request.Request(f"http://127.0.0.1:{port}/api/anpr", body,
                                 {"Content-Type": "multipart/form-data; boundary=x"})
for _ in range(600):
    try:
        assert urllib.request.urlopen(request).status == 200
        break
    except OSError:
        time.sleep(0.1)
else:
    sys.exit("never answered")
time.sleep(float(seconds))
server.terminate()
sys.exit(server.wait())
"""
# A namespace of its own has no way out: whoever tries to leave is seen and harms nobody.
_ALONE = ["unshare", "--map-root-user", "--net", "sh", "-c", 'ip link set lo up; exec "$@"', "sh"]


def _can_be_alone() -> bool:
    if not (shutil.which("strace") and shutil.which("unshare") and shutil.which("ip")):
        return False
    command = [*_ALONE, "strace", "-f", "true"]
    return subprocess.run(command, capture_output=True, check=False).returncode == 0


def outward(trace: str) -> list[str]:
    """Return the connects to Internet addresses that are not this machine's own."""
    found = re.findall(r"^.*connect\(.*sa_family=AF_INET6?,.*$", trace, re.MULTILINE)
    return [line for line in found if '"127.' not in line and '"::1"' not in line]


@pytest.mark.skipif(not _can_be_alone(), reason="needs strace and network namespaces")
@pytest.mark.parametrize("what", ["read", "serve"])
def test_reading_and_serving_connect_to_nobody_and_keep_no_identity(
    home, tmp_path, plate_photo, what
):
    photo, trace = tmp_path / "car.jpg", tmp_path / "trace"
    photo.write_bytes(plate_photo)
    given = [_READ, str(photo)] if what == "read" else [_SERVE, str(free_port())]
    command = [sys.executable, "-c", *given, str(_LATEST_SECONDS), str(photo)]
    traced = ["strace", "-f", "-qq", "-e", "trace=connect", "-o", str(trace), *command]
    done = subprocess.run(
        [*_ALONE, *traced], env=home.environment, text=True, capture_output=True, timeout=120,
        check=False,
    )  # fmt: skip
    assert done.returncode == 0, done.stderr
    assert outward(trace.read_text()) == []
    kept = [
        Path(folder) / name for folder, _, names in os.walk(tmp_path / "home") for name in names
    ]
    assert kept == []


def test_an_outward_connection_would_be_seen():
    line = 'connect(3, {sa_family=AF_INET, sin_port=htons(443), sin_addr=inet_addr("192.0.2.1")}'
    assert outward(f"1 {line}, 16) = -1\n") != []


def test_every_module_takes_the_runtime_from_the_place_that_silences_it():
    package = Path(zelvoran_anpr.__file__).parent
    importers = {
        str(path.relative_to(package))
        for path in package.rglob("*.py")
        for node in ast.walk(ast.parse(path.read_text()))
        if isinstance(node, (ast.Import, ast.ImportFrom))
        and any(_is_runtime(name) for name in _named(node))
    }
    assert importers == {str(Path("reading", "quiet_runtime.py"))}


def _named(node: ast.Import | ast.ImportFrom) -> list[str]:
    if isinstance(node, ast.Import):
        return [name.name for name in node.names]
    return [node.module or ""] if node.level == 0 else []


def _is_runtime(name: str) -> bool:
    return name.partition(".")[0] == "onnxruntime"
