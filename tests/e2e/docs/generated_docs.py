"""Where the build leaves what it makes from the command table, and what help pages name."""

import re
import shutil
from pathlib import Path

import pytest
from program import EXECUTABLE

GENERATED = EXECUTABLE.resolve().parent / "generated"


def generated(name: str) -> Path:
    path = GENERATED / name
    assert path.is_file(), f"{path} is missing: build the project"
    return path


def needs(program: str):
    return pytest.mark.skipif(not shutil.which(program), reason=f"{program} is not installed")


def commands_in(help_page: str) -> list[str]:
    """Return the commands in the usage line's braces; those of the page's own level."""
    usage = help_page.split("\n\n")[0]
    found = re.search(r"\{([a-z,-]+)\}\s+\.\.\.", usage)
    return found[1].split(",") if found else []


def options_in(help_page: str) -> set[str]:
    section = help_page.split("\noptions:\n")[1].split("\n\n")[0]
    heads = [line.strip().split("  ")[0] for line in section.splitlines() if line[2:3] == "-"]
    return set(re.findall(r"(?<!\S)--?[a-z][a-z-]*", "\n".join(heads)))


def every_command(zv, words: tuple[str, ...] = ()) -> list[tuple[tuple[str, ...], str]]:
    """Walk the program's own help pages: the words of each command, and its page."""
    page = zv(*words, "-h").out
    found = [(words, page)]
    for name in commands_in(page):
        found += every_command(zv, (*words, name))
    return found
