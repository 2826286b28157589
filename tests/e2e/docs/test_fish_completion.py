"""The completion in a real fish offers what the program's own help pages name."""

import os
import subprocess

import pytest
from generated_docs import commands_in, every_command, generated, needs, options_in

pytestmark = needs("fish")


@pytest.fixture
def folder(tmp_path):
    """Where the user stands: files of it are offered too."""
    path = tmp_path / "photos"
    path.mkdir()
    return path


@pytest.fixture
def offered(folder):
    """Ask for several command lines at once, as starting fish takes a while."""

    def ask(*lines: str) -> list[set[str]]:
        script = f"source '{generated('zv-anpr.fish')}'\n"
        script += "".join(f"complete -C '{line}'; echo ----\n" for line in lines)
        done = subprocess.run(
            ["fish", "--no-config", "-c", script], cwd=folder, capture_output=True, text=True,
            check=True, env={**os.environ, "HOME": str(folder)},
        )  # fmt: skip
        assert done.stderr == ""
        answers = done.stdout.split("----\n")[:-1]
        return [{line.split("\t")[0] for line in answer.splitlines()} for answer in answers]

    return ask


def test_every_command_offers_the_options_of_its_help_page(zv, offered):
    pages = every_command(zv)
    lines = [f"zv-anpr {' '.join((*words, part))}" for words, _ in pages for part in ("-", "--")]
    answers = offered(*lines)
    for (words, page), one_dash, two in zip(pages, answers[::2], answers[1::2], strict=True):
        assert one_dash | two == options_in(page), words


def test_every_family_offers_the_commands_of_its_help_page(zv, offered):
    for words, page in every_command(zv):
        if names := commands_in(page):
            assert offered(f"zv-anpr {' '.join(words)} ") == [set(names)]


def test_words_and_what_is_offered(offered, folder):
    (folder / "x.jpg").touch()
    assert offered(
        "zv-anpr read --backend ",
        "zv-anpr car.jpg --reg",
        "zv-anpr server logs -n 5 --fol",
        "zv-anpr mmc-backend ",
        "zv-anpr model-info ",
        "zv-anpr read x",
    ) == [
        {"cpu", "cuda", "directml"},
        {"--region"},
        {"--follow"},
        {"cloud", "local"},
        set(),
        {"x.jpg"},
    ]
