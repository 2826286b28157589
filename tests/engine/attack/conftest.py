"""The real servers of the server tests, for those who want to harm them."""

import importlib.util
import sys
from pathlib import Path

_SERVER_TESTS = Path(__file__).parents[1] / "server"

# Both folders have a file of this name: theirs is loaded by its place.
sys.path.append(str(_SERVER_TESTS))
_spec = importlib.util.spec_from_file_location("server_tests", _SERVER_TESTS / "conftest.py")
_theirs = importlib.util.module_from_spec(_spec)
sys.modules["server_tests"] = _theirs
_spec.loader.exec_module(_theirs)
globals().update({name: value for name, value in vars(_theirs).items() if name[0] != "_"})
