"""The manual page is well formed and names what the program's own help pages name."""

import os
import re
import subprocess

from generated_docs import every_command, generated, needs, options_in


def said(*command: object, **environment: str) -> str:
    done = subprocess.run(
        command, capture_output=True, text=True, check=True, env={**os.environ, **environment}
    )
    assert done.stderr == ""
    return done.stdout


@needs("groff")
def test_groff_has_nothing_to_warn_of():
    assert said("groff", "-man", "-ww", "-z", generated("zv-anpr.1")) == ""


@needs("mandoc")
def test_mandoc_has_nothing_to_warn_of_but_the_missing_date():
    page = generated("zv-anpr.1")
    done = subprocess.run(
        ["mandoc", "-T", "lint", "-W", "warning", page], capture_output=True, text=True, check=False
    )
    warnings = [line for line in done.stdout.splitlines() if "missing date" not in line]
    assert warnings == []


@needs("mandoc")
def test_it_tells_every_command_and_option(zv):
    text = said("mandoc", "-T", "ascii", generated("zv-anpr.1"))
    text = re.sub(".\b", "", text)
    sections = dict(re.findall(r"^   (\S.*)\n((?:(?:       .*)?\n)*)", text, re.MULTILINE))
    for words, page in every_command(zv):
        title = " ".join(("zv-anpr", *words)) if words else "options without a command"
        assert title in sections
        named = set(re.findall(r"(?<!\S)--?[a-z][a-z-]*(?=[ ,\n])", sections[title]))
        assert options_in(page) <= named, title
