"""The two modules that every server command loads: light, and clear about what is missing."""

import subprocess
import sys
from pathlib import Path

import pytest

HEAVY = {"fastapi", "uvicorn", "starlette", "pydantic", "numpy", "PIL", "onnxruntime", "ruamel",
         "psutil", "prometheus_client", "ssl"}  # fmt: skip
DAEMON = "zelvoran_anpr.zelvoran_anpr_server_daemon"
CONFIG = "zelvoran_anpr.zelvoran_anpr_server_config"


@pytest.mark.parametrize("module", [DAEMON, CONFIG])
def test_importing_loads_nothing_heavy(module):
    code = f"import sys, {module}; print(*{{name.partition('.')[0] for name in sys.modules}})"
    done = subprocess.run([sys.executable, "-I", "-S", "-c", _with_path(code)], text=True,
                          capture_output=True, check=True)  # fmt: skip
    assert HEAVY.isdisjoint(done.stdout.split())


def test_finding_servers_loads_nothing_heavy(home):
    code = f"import sys, {DAEMON} as d; d.get_status(); d.find_all_servers(); print(*sys.modules)"
    done = subprocess.run([sys.executable, "-c", code], env=home.environment, text=True,
                          capture_output=True, check=True)  # fmt: skip
    assert HEAVY.isdisjoint(done.stdout.split())


@pytest.mark.parametrize(
    ("module", "named"), [("uvicorn", "uvicorn"), ("python_multipart", "python-multipart")]
)
def test_a_missing_package_of_the_extra_is_named(module, named):
    code = (
        "import sys, importlib.util as u; find = u.find_spec\n"
        f"u.find_spec = lambda name, *rest: None if name == {module!r} else find(name, *rest)\n"
        f"try:\n    import {DAEMON}\nexcept ImportError as error:\n    print(error)"
    )
    done = subprocess.run([sys.executable, "-c", code], text=True, capture_output=True, check=True)
    advice = "(they come with pip install 'zelvoran-anpr[server]')"
    assert done.stdout == f"missing {named} {advice}\n"


def test_the_documented_configuration_is_the_default(tmp_path, monkeypatch):
    from zelvoran_anpr.server.config.options import default_config
    from zelvoran_anpr.zelvoran_anpr_server_config import load_config

    guide = Path(__file__).parents[3] / "docs" / "server.md"
    documented = tmp_path / "documented.yaml"
    documented.write_text(guide.read_text().split("```yaml\n")[1].split("```")[0])
    assert load_config(documented) == default_config()


def _with_path(code: str) -> str:
    import zelvoran_anpr

    paths = [str(Path(zelvoran_anpr.__file__).parents[1]), *sys.path]
    return f"import sys; sys.path[:] = {paths!r}; {code}"
