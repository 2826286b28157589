"""The completion in a real zsh, asked through its own pseudo-terminal module."""

import subprocess

import pytest
from generated_docs import commands_in, every_command, generated, needs, options_in

pytestmark = needs("zsh")

# An interactive zsh completes each line; every match goes into a file instead of onto the screen.
ASK = r"""
zmodload zsh/zpty
zpty shell zsh -f -i
answer() { local line; while zpty -r shell line "*$1*"; do return; done }
zpty -w shell "fpath=($1 \$fpath); autoload -Uz compinit; compinit -D -u; cd $2"
zpty -w shell 'compadd() {
  if [[ ${@[1,(i)(-|--)]} == *-(O|A|D)\ * ]]; then builtin compadd "$@"; return; fi
  local -a found
  builtin compadd -O found "$@"
  print -rl -- $found >> matches
  builtin compadd "$@"
}
finish() { zle kill-whole-line; print done$((1 + 1)) }
zle -N finish
bindkey "^X" finish'
shift 2
for line; do
  zpty -w shell 'print "====" >> matches; print rea""dy'
  answer ready
  zpty -n -w shell "$line"$'\t\x18'
  answer done2
done
"""


@pytest.fixture
def offered(tmp_path):
    def ask(*lines: str) -> list[set[str]]:
        folder = generated("_zv-anpr").parent
        command = ["zsh", "-f", "-c", ASK, "zsh", folder, tmp_path, *lines]
        (tmp_path / "matches").unlink(missing_ok=True)
        subprocess.run(command, capture_output=True, text=True, check=True, timeout=100)
        answers = (tmp_path / "matches").read_text().split("====\n")[1:]
        return [set(answer.split()) for answer in answers]

    return ask


def test_it_is_well_formed():
    subprocess.run(["zsh", "-n", generated("_zv-anpr")], check=True)


def test_every_command_offers_the_options_of_its_help_page(zv, offered):
    pages = every_command(zv)
    answers = offered(*(f"zv-anpr {' '.join((*words, '-'))}" for words, _ in pages))
    for (words, page), answer in zip(pages, answers, strict=True):
        assert answer == options_in(page), words


def test_every_family_offers_the_commands_of_its_help_page(zv, offered):
    for words, page in every_command(zv):
        if names := commands_in(page):
            (answer,) = offered(f"zv-anpr {' '.join(words)} ")
            assert set(names) <= answer


def test_words_and_what_is_offered(offered):
    assert offered(
        "zv-anpr read --backend ",
        "zv-anpr car.jpg --reg",
        "zv-anpr server logs -n 5 --fol",
        "zv-anpr mmc-backend ",
    ) == [{"cpu", "cuda", "directml"}, {"--region"}, {"--follow"}, {"cloud", "local"}]
