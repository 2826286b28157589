"""Which modules of the package import which, late imports included: one way, and in no circle."""

import ast
from collections.abc import Iterator
from graphlib import TopologicalSorter
from pathlib import Path

import pytest
import zelvoran_anpr

PACKAGE = Path(zelvoran_anpr.__file__).parent
MODULES = {
    ".".join(path.relative_to(PACKAGE).with_suffix("").parts).removesuffix(".__init__"): path
    for path in PACKAGE.rglob("*.py")
}
PLACES = {"mmc.errors", "mmc.places"}
ALLOWED = {
    "mmc.fetch": {"mmc.errors"},
    "mmc.install": {"atomic_file", "mmc.fetch", *PLACES},
    "mmc.serve": {"atomic_file", "options", "mmc.fetch", "mmc.install", *PLACES},
    "mmc": {"mmc.errors", "mmc.serve"},
    "reading": {"region_aliases"},
    "fleet": {"_version", "atomic_file", "reading", "region_aliases"},
    "server.config": {"atomic_file", "options", "region_aliases", "mmc.serve"},
    "server.peer": {"server.config"},
    "server.workers": {"mmc", "reading"},
    "server.web": {"_version", "atomic_file", "mmc", "region_aliases", "region_countries",
                   "server.config", "server.daemon", "server.peer", "server.workers"},
    "server.daemon": {"_version", "atomic_file", "server.config", "server.serve"},
    "region_aliases": {"region_countries"},
    **{key: set() for key in ("_version", "atomic_file", "options", "region_countries")},
}  # fmt: skip
"""What each room may import besides itself; rooms of rooms go by both names."""


def imported_by(name: str) -> Iterator[str]:
    """The modules of this package that `name` imports relatively, as the house does it."""
    steps = name.split(".") if name != "__init__" else []
    package = steps if MODULES[name].name == "__init__.py" else steps[:-1]
    for node in ast.walk(ast.parse(MODULES[name].read_text(encoding="utf-8"))):
        if isinstance(node, ast.ImportFrom) and node.level:
            base = package[: len(package) - node.level + 1] + (node.module or "").split(".")
            for alias in node.names:
                full = ".".join([*base, alias.name]).strip(".")
                yield full if full in MODULES else ".".join(base).strip(".")


GRAPH = {name: {found for found in imported_by(name) if found != name} for name in MODULES}


def test_every_module_is_found_and_they_import_each_other():
    assert len(MODULES) > 100
    assert "server.config.config_file" in GRAPH["server.config.settings"]
    assert "reading" in set.union(*(GRAPH[name] for name in GRAPH if name.startswith("server.")))


def test_no_circle():
    list(TopologicalSorter(GRAPH).static_order())  # raises CycleError, which names the modules


def room_of(name: str) -> str:
    first, _, rest = name.partition(".")
    return f"{first}.{rest.partition('.')[0]}" if rest and first in ("mmc", "server") else first


@pytest.mark.parametrize("room", ALLOWED)
def test_a_room_knows_only_those_below_it(room):
    within = [name for name in GRAPH if room_of(name) == room]
    assert within
    found = {room_of(target) for name in within for target in GRAPH[name]}
    assert found - {room} <= ALLOWED[room]
