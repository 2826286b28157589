"""Makes the real engine wait for a file: a stand-in for models that load or read slowly.

The directory that `hold` writes goes on PYTHONPATH of a server; while the named file is missing,
loading (or reading) waits for it.
"""

from pathlib import Path

_HOOK = """
import pathlib, sys, time, importlib.abc, importlib.util

def wait(name):
    while not (pathlib.Path({directory!r}) / name).exists():
        time.sleep(0.02)

class Hook(importlib.abc.MetaPathFinder):
    def find_spec(self, name, path, target=None):
        if name != "zelvoran_anpr.reading":
            return None
        sys.meta_path.remove(self)
        spec = importlib.util.find_spec(name)
        execute = spec.loader.exec_module
        def held(module):
            execute(module)
            wait("load")
            read, seen = module.read_plates, []
            def read_when_allowed(*arguments, **options):
                if seen:
                    wait("read")
                seen.append(1)  # the first is the warm-up
                return read(*arguments, **options)
            module.read_plates = read_when_allowed
        spec.loader.exec_module = held
        return spec

sys.meta_path.insert(0, Hook())
"""


class Hold:
    """`load` and `read` wait until they are let go."""

    def __init__(self, directory: Path) -> None:
        self._directory = directory
        directory.mkdir()
        (directory / "sitecustomize.py").write_text(_HOOK.format(directory=str(directory)))

    def add_to(self, environment: dict[str, str]) -> None:
        environment["PYTHONPATH"] = f"{self._directory}:{environment.get('PYTHONPATH', '')}"

    def let_go(self, what: str) -> None:
        (self._directory / what).touch()
