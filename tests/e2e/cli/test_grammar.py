"""The grammar as a user meets it: commands, options, help, errors, the form without a command."""

import pytest


def reading(zv, *words):
    """Runs `read` words on an image that exists and answers the header line."""
    (zv.folder / "a.jpg").touch()
    status, out, err = zv(*words)
    assert status == 0, err
    return out.splitlines()[0]


def test_no_arguments_print_the_help(zv):
    status, out, err = zv()
    assert status == 0
    assert out.startswith("usage: zelvoran-anpr [-h] [--version]")
    assert "Zelvoran ANPR CLI - License Plate Detection and Recognition" in out
    assert err == ""


def test_help_lists_the_commands_in_order_and_read_only_in_the_usage(zv):
    out = zv("-h").out
    listed = [
        line.split()[0] for line in out.splitlines() if line.startswith("    ") and line[4] != " "
    ]
    assert listed == [
        "gpu-info", "gpu-setup", "model-info", "version", "mmc-setup", "mmc-backend",
        "mmc-uninstall",
        "server",
    ]  # fmt: skip
    assert "mmc-uninstall,read,server}" in out


def test_version_option_and_command_print_the_same_line(zv):
    assert zv("--version") == zv("version")
    assert zv("version").out == "Zelvoran ANPR CLI v3.2.1\n"


def test_server_help_ends_with_its_page_without_the_first_line(zv):
    out = zv("server", "-h").out
    assert "Usage: zv-anpr server <command>" not in out
    assert out.endswith("\nRun 'zv-anpr server <command> -h' for command options.\n")
    assert "\n  zv-anpr server detect *.jpg --region kr  # batch with region\n" in out


@pytest.mark.parametrize(
    "words, sentence",
    [
        (["read"], "the following arguments are required: input"),
        (["server", "detect"], "the following arguments are required: images"),
        (["server", "logs", "-n", "abc"], "invalid int value: 'abc'"),
        (["server", "start", "--port", "1.5"], "invalid int value: '1.5'"),
        (["read", "a.jpg", "--confidence", "high"], "invalid float value: 'high'"),
        (["read", "a.jpg", "--backend", "tpu"], "invalid choice: 'tpu'"),
        (["read", "a.jpg", "--ocr-version", "v16"], "invalid choice: 'v16'"),
        (["gpu-setup", "rocm"], "invalid choice: 'rocm'"),
        (["gpu-setup", "cpu", "cuda"], "unrecognized arguments: cuda"),
        (["version", "--loud"], "unrecognized arguments: --loud"),
        (["server", "start", "--port"], "expected one argument"),
        (["read", "a.jpg", "--json", "--output", "x"], "argument --json: expected one argument"),
        (["mmc-setup", "--llama"], "ambiguous option: --llama"),
        (["server", "list", "--all"], "unrecognized arguments: --all"),
        (["server", "start", "--daemon=yes"], "argument --daemon: takes no value"),
        (["test-api"], "invalid choice: 'test-api'"),
        (["read", "a.jpg", "--version"], "unrecognized arguments: --version"),
    ],
)
def test_misuse_is_one_sentence_after_the_usage_and_status_2(zv, words, sentence):
    status, out, err = zv(*words)
    assert status == 2
    assert out == ""
    assert err.startswith("usage: zelvoran-anpr")
    assert sentence in err.splitlines()[-1]
    assert err.splitlines()[-1].startswith("zelvoran-anpr")


@pytest.mark.parametrize(
    "words, page",
    [
        (["version", "extra", "-h"], "version"),
        (["read", "--bogus", "--help"], "read"),
        (["server", "stop", "-fh"], "server stop"),
        (["server", "stop", "-hf"], "server stop"),
        (["server", "logs", "extra", "--bogus", "-h", "-n", "x"], "server logs"),
    ],
)
def test_help_is_given_whatever_unknown_word_stands_before_it(zv, words, page):
    status, out, err = zv(*words)
    assert (status, err) == (0, "")
    assert out.startswith(f"usage: zelvoran-anpr {page} [-h]")


def test_the_first_unknown_word_is_the_one_that_is_told(zv):
    last_line = zv("server", "--bogus", "logs", "extra", "-n", "x").err.splitlines()[-1]
    assert last_line.startswith("zelvoran-anpr server: error: unrecognized arguments: --bogus")


@pytest.mark.parametrize("word", ["-hx", "-help", "-h=1"])
def test_letters_that_are_no_options_are_refused_after_h_too(zv, word):
    assert (zv("read", word).status, zv("read", word).out) == (2, "")


@pytest.mark.parametrize(
    "words, suggested",
    [
        (["servr"], "did you mean 'server'?"),
        (["version", "--hlep"], "did you mean '--help'?"),
        (["server", "statsu"], "did you mean 'status'?"),
        (["gpu-setup", "cudaa"], "did you mean 'cuda'?"),
    ],
)
def test_a_mistyped_word_is_answered_with_the_nearest_known_one(zv, words, suggested):
    assert suggested in zv(*words).err


@pytest.mark.parametrize(
    "options",
    [
        ["--confidence", "0.75"],
        ["--confidence=0.75"],
        ["--conf", "0.75"],
        ["--confidence", "0.1", "--confidence", "0.75"],
        ["--confidence", " 7.5e-1 "],
    ],
)
def test_spellings_of_an_option_with_a_value(zv, options):
    assert reading(zv, "read", "a.jpg", *options).endswith("| Conf: 0.75")


def test_options_may_stand_before_between_and_after_the_images(zv):
    (zv.folder / "b.jpg").touch()
    line = reading(zv, "read", "--ocr-model", "x", "a.jpg", "--detector-model", "y", "b.jpg")
    assert line == "Processing 2 images | y/x | Conf: 0.5"


@pytest.mark.parametrize(
    "number, shown", [("-0.5", "-0.5"), ("1", "1.0"), ("-.5", "-0.5"), ("inf", "inf")]
)
def test_the_threshold_takes_any_number(zv, number, shown):
    assert reading(zv, "read", "a.jpg", "--confidence", number).endswith(f"| Conf: {shown}")


def test_words_after_two_dashes_are_images(zv):
    (zv.folder / "-a.jpg").touch()
    status, out, _ = zv("read", "--", "-a.jpg")
    assert status == 0
    assert "-a.jpg: No plates" in out


@pytest.mark.parametrize("first", ["car.jpg", "./car.jpg", "*.jpg", "cars", "."])
def test_the_form_without_a_command_reads(zv, first):
    (zv.folder / "car.jpg").touch()
    (zv.folder / "cars").mkdir()
    (zv.folder / "cars" / "car.jpg").touch()
    status, out, _ = zv(first, "--region", "kr")
    assert status == 0
    assert "car.jpg: No plates\n" in out
    assert ["to_internal_region", ["kr"], {}] in zv.calls()


def test_a_word_that_names_no_entry_is_no_image(zv):
    assert zv("cars").status == 2


def test_protected_commands_stay_commands_beside_an_entry_of_their_name(zv):
    (zv.folder / "version").mkdir()
    assert zv("version").out == "Zelvoran ANPR CLI v3.2.1\n"


def test_read_itself_becomes_an_input_beside_an_entry_of_its_name(zv):
    (zv.folder / "x.jpg").touch()
    (zv.folder / "read").mkdir()
    (zv.folder / "read" / "y.jpg").touch()
    out = zv("read", "x.jpg").out
    assert "Processing 2 images" in out
    assert out.index("y.jpg: ") < out.index("x.jpg: ")


def test_help_of_a_sub_command_names_the_whole_path(zv):
    out = zv("server", "stop", "--help").out
    assert out.startswith("usage: zelvoran-anpr server stop [-h] [--force] [--port TARGET_PORT]")
    assert "--force, -f" in out


def test_help_wraps_at_the_width_of_the_terminal(zv):
    narrow = zv("read", "-h", env={"COLUMNS": "70"}).out
    assert max(map(len, narrow.splitlines())) <= 68
