"""The completion in a real bash offers what the program's own help pages name."""

import subprocess

import pytest
from generated_docs import commands_in, every_command, generated, needs, options_in

pytestmark = needs("bash")

# Prints the answers; then "files" when bash would offer files in addition.
ASK = """
source "$1"; shift
compopt() { files=; }
files=files
COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
_zv_anpr
printf '%s\\n' "${COMPREPLY[@]}" $files
"""


def offered(*words: str) -> set[str]:
    command = ["bash", "--norc", "-uc", ASK, "bash", generated("zv-anpr.bash"), "zv-anpr", *words]
    done = subprocess.run(command, capture_output=True, text=True, check=True)
    assert done.stderr == ""
    return set(done.stdout.split())


def test_it_is_registered_for_the_program():
    script = f"source '{generated('zv-anpr.bash')}'; complete -p zv-anpr"
    done = subprocess.run(
        ["bash", "--norc", "-c", script], capture_output=True, text=True, check=True
    )
    assert done.stdout.split()[-3:] == ["-F", "_zv_anpr", "zv-anpr"]


def test_every_command_offers_the_options_of_its_help_page(zv):
    pages = every_command(zv)
    assert len(pages) > 20
    for words, page in pages:
        assert offered(*words, "-") == options_in(page), words


def test_every_family_offers_the_commands_of_its_help_page(zv):
    families = [(words, page) for words, page in every_command(zv) if commands_in(page)]
    assert [words for words, _ in families] == [(), ("server",)]
    for words, page in families:
        assert offered(*words, "") - {"files"} == set(commands_in(page))


@pytest.mark.parametrize(
    "words, answers",
    [
        (("serv",), {"server", "files"}),
        (("server", "st"), {"start", "stop", "status"}),
        (("read", "--backend", ""), {"cpu", "cuda", "directml"}),
        (("read", "--backend", "=", "cu"), {"cuda"}),
        (("read", "--backend", "="), {"cpu", "cuda", "directml"}),
        (("car.jpg", "--reg"), {"--region"}),
        (("read", "car.jpg", ""), {"files"}),
        (("read", "--output", "x"), {"files"}),
        (("server", "logs", "-n", ""), set()),
        (("server", "logs", "-n", "5", "--fol"), {"--follow"}),
        (("server", "detect", "a.jpg", "--mm"), {"--mmc"}),
        (("server", "start", "--config", ""), {"files"}),
        (("mmc-backend", ""), {"cloud", "local"}),
        (("mmc-backend", "lo"), {"local"}),
        (("model-info", ""), set()),
    ],
)
def test_words_and_what_is_offered(words, answers):
    assert offered(*words) == answers
