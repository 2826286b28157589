"""The configuration file: what is read, what a save keeps, and what it refuses."""

import datetime
import os
import stat

import pytest
from zelvoran_anpr.server.config.options import default_config, default_text
from zelvoran_anpr.zelvoran_anpr_server_config import (
    ConfigError,
    get_config_dir,
    load_config,
    save_config,
)

WRITTEN = """\
# kept by hand
server:
  host: 0.0.0.0   # all networks
  port: 8_001
  big: 123456789012345678901234567890
  real: 1.50
  none:
  day: 2024-01-02
  moment: 2024-01-02T03:04:05+02:00
  7: seven
  "quoted": 'ü → 漢'
  list:
    - a   # first
    - b

# vehicles
mmc:
  backend: cloud  # for now

# the end
unknown: {deep: {a: 1, b: [x, y]}}
"""


@pytest.fixture(autouse=True)
def config_file(tmp_path, monkeypatch):
    monkeypatch.setenv("ZELVORAN_CONFIG_DIR", str(tmp_path / "zv"))
    (tmp_path / "zv").mkdir()
    return tmp_path / "zv" / "server_config.yaml"


def test_the_directory_is_in_the_home_unless_named_otherwise(monkeypatch, tmp_path):
    assert get_config_dir() == tmp_path / "zv"
    monkeypatch.delenv("ZELVORAN_CONFIG_DIR")
    monkeypatch.setenv("HOME", str(tmp_path))
    assert get_config_dir() == tmp_path / ".zelvoran"


def test_without_a_file_the_defaults_are_loaded():
    config = load_config()
    assert config == default_config()
    assert (config["server"]["host"], config["server"]["port"]) == ("127.0.0.1", 8000)
    assert config["mmc"]["backend"] == "cloud"


def test_the_commented_default_text_says_the_defaults(config_file):
    config_file.write_text(default_text())
    assert load_config() == default_config()


def test_values_come_as_plain_python_values(config_file):
    config_file.write_text(WRITTEN, encoding="utf-8")
    server = load_config()["server"]
    assert server["big"] == 123456789012345678901234567890
    assert server["none"] is None
    assert server["day"] == datetime.date(2024, 1, 2)
    assert server["moment"].utcoffset() == datetime.timedelta(hours=2)
    assert (server[7], server["quoted"], server["real"]) == ("seven", "ü → 漢", 1.5)
    kinds = {type(value) for value in server.values()}
    assert kinds == {str, int, float, type(None), datetime.date, datetime.datetime, list}


def test_saving_what_was_loaded_changes_nothing(config_file):
    config_file.write_text(WRITTEN, encoding="utf-8")
    save_config(load_config())
    assert config_file.read_text(encoding="utf-8") == WRITTEN


def test_a_change_touches_only_its_line(config_file):
    config_file.write_text(WRITTEN, encoding="utf-8")
    config = load_config()
    config["mmc"]["backend"] = "local"
    config["mmc"]["enabled"] = True
    save_config(config)
    expected = WRITTEN.replace(
        "  backend: cloud  # for now\n", "  backend: local  # for now\n  enabled: true\n"
    )
    assert config_file.read_text(encoding="utf-8") == expected


def test_a_missing_section_is_created(config_file):
    config_file.write_text("server:\n  port: 9000 # mine\n")
    config = load_config()
    assert "mmc" not in config
    config["mmc"] = {}
    config["mmc"]["backend"] = "cloud"
    config["mmc"]["enabled"] = True
    save_config(config)
    assert config_file.read_text() == (
        "server:\n  port: 9000 # mine\nmmc:\n  backend: cloud\n  enabled: true\n"
    )


def test_an_empty_section_can_be_filled(config_file):
    config_file.write_text("mmc:\n")
    config = load_config()
    config["mmc"]["backend"] = "local"
    save_config(config)
    assert load_config() == {"mmc": {"backend": "local"}}


def test_a_key_that_was_taken_out_is_gone(config_file):
    config_file.write_text("server:\n  port: 9000\n  host: localhost\n")
    config = load_config()
    del config["server"]["port"]
    save_config(config)
    assert config_file.read_text() == "server:\n  host: localhost\n"


def test_true_and_one_are_different_values(config_file):
    config_file.write_text("mmc:\n  enabled: 1\n")
    config = load_config()
    config["mmc"]["enabled"] = True
    save_config(config)
    assert config_file.read_text() == "mmc:\n  enabled: true\n"


def test_values_that_shared_one_anchor_may_differ_after_a_save(config_file):
    config_file.write_text("a: &same {x: 1}\nb: *same\n")
    config = load_config()
    config["b"]["x"] = 2
    save_config(config)
    assert load_config() == {"a": {"x": 1}, "b": {"x": 2}}


@pytest.mark.parametrize(
    ("text", "line"),
    [
        (b"server:\n  port: [1\n", 3),
        (b"server:\n  port: 1\n  port: 2\n", 3),
        (b"server:\n\tport: 1\n", 2),
        (b"# \n- a list\n", 1),
        (b"server:\n  host: \xff\n", 2),
        (b"a: 1\nserver: 5\n", 2),
    ],
)
def test_a_broken_file_is_reported_with_its_line_and_left_alone(config_file, text, line):
    config_file.write_bytes(text)
    with pytest.raises(ConfigError) as raised:
        load_config()
    assert f"{config_file}, line {line}: " in str(raised.value)
    assert "\n" not in str(raised.value)
    if b"server: 5" not in text:
        with pytest.raises(ConfigError):
            save_config({"server": {"port": 1}})
        assert config_file.read_bytes() == text


def test_a_named_file_must_exist(tmp_path):
    with pytest.raises(ConfigError, match="not found"):
        load_config(tmp_path / "other.yaml")


def test_a_byte_order_mark_is_no_part_of_the_first_key(config_file):
    config_file.write_bytes(b"\xef\xbb\xbfserver:\n  port: 9000\n")
    assert load_config() == {"server": {"port": 9000}}


def test_a_save_replaces_the_target_of_a_link_and_keeps_its_mode(config_file, tmp_path):
    target = tmp_path / "shared.yaml"
    target.write_text("server:\n  port: 1\n")
    target.chmod(0o640)
    config_file.symlink_to(target)
    save_config({"server": {"port": 2}})
    assert config_file.is_symlink()
    assert target.read_text() == "server:\n  port: 2\n"
    assert stat.S_IMODE(target.stat().st_mode) == 0o640


def test_a_first_save_writes_the_commented_defaults_for_the_owner_only(config_file):
    config = load_config()
    config["server"]["port"] = 9999
    save_config(config)
    assert load_config()["server"]["port"] == 9999
    assert "# port to listen on" in config_file.read_text()
    assert stat.S_IMODE(config_file.stat().st_mode) == 0o600


def test_a_failed_save_leaves_the_old_file_and_no_litter(config_file, monkeypatch):
    config_file.write_text("server:\n  port: 1\n")

    def no_space(*_):
        raise OSError(28, "No space left on device")

    monkeypatch.setattr(os, "fsync", no_space)
    with pytest.raises(OSError, match="No space"):
        save_config({"server": {"port": 2}})
    assert config_file.read_text() == "server:\n  port: 1\n"
    assert list(config_file.parent.iterdir()) == [config_file]
