"""The rooms of src/ and the arrows between them: said once in words, once to CMake, and kept."""

import re
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[3]
SOURCES = ROOT / "src"


def linked() -> dict[str, set[str]]:
    """Room -> rooms that it links to, as CMake builds them."""
    text = (ROOT / "CMakeLists.txt").read_text()
    rooms = re.findall(r"^zv_room\((\w+) LINKS ([^)]*)\)", text, re.MULTILINE)
    names = {name for name, _ in rooms}
    links = {name: {link.removeprefix("zv_") for link in words.split()} for name, words in rooms}
    return {name: links[name] & names for name in names}


def drawn() -> dict[str, set[str]]:
    """The same from the table in ARCHITECTURE.md: lines "room -> room room"."""
    text = (ROOT / "ARCHITECTURE.md").read_text()
    lines = re.findall(r"^(\w+) +->((?: \w+)*)$", text, re.MULTILINE)
    return {name: set(rooms.split()) for name, rooms in lines}


def reachable(room: str, arrows: dict[str, set[str]]) -> set[str]:
    return {room}.union(*(reachable(below, arrows) for below in arrows[room]))


def test_words_and_build_say_the_same():
    assert drawn() == linked()


def test_every_folder_is_a_room():
    folders = {path.name for path in SOURCES.iterdir() if path.is_dir()}
    assert folders == set(linked())


@pytest.mark.parametrize("room", sorted(linked()))
def test_headers_are_taken_along_the_arrows_only(room):
    allowed = reachable(room, linked())
    for path in (SOURCES / room).rglob("*"):
        if path.suffix not in (".h", ".cc"):
            continue
        rooms = set(re.findall(r'^#include "(\w+)/', path.read_text(), re.MULTILINE)) - {"src"}
        assert rooms <= allowed, path


def includes(path: Path) -> set[str]:
    """Of a file and, where it has one, the header that it implements."""
    texts = [file.read_text() for file in (path, path.with_suffix(".h")) if file.is_file()]
    return set(re.findall(r'^#include "([\w/.]+)"', "\n".join(texts), re.MULTILINE))


def test_who_uses_python_objects_includes_them():
    for path in SOURCES.rglob("*"):
        if path.suffix in (".h", ".cc") and path.parent.name != "python":
            uses = re.search(r"\bpython::", path.read_text())
            assert not uses or any(name.startswith("python/") for name in includes(path)), path
