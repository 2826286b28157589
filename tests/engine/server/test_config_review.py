"""Keys that mean nothing and values that are wrong: told before and while a server runs."""

import pytest
from processes import free_port
from zelvoran_anpr.server import check
from zelvoran_anpr.server.config.settings import load_settings
from zelvoran_anpr.zelvoran_anpr_server_config import (
    ConfigError,
    ensure_api_token,
    local_api_token,
)

ODD = """\
server: {require_tokens: true, port: 8001, 7: x}
mmc: {cloud: {api_kee: k}, local: {context: 4096}, daily: 1}
limit: {queue: 1}
"""
ODD_LINES = [
    "limit is no option; did you mean limits?",
    "server.require_tokens is no option; did you mean server.require_token?",
    "server.7 is no option",
    "mmc.daily is no option",
    "mmc.cloud.api_kee is no option; did you mean mmc.cloud.api_key?",
]


@pytest.fixture(autouse=True)
def config_file(tmp_path, monkeypatch):
    monkeypatch.setenv("ZELVORAN_CONFIG_DIR", str(tmp_path))
    return tmp_path / "server_config.yaml"


def test_unknown_keys_are_told_with_the_nearest_one(config_file):
    config_file.write_text(ODD)
    settings = load_settings(None, {})
    assert settings.server.port == 8001
    assert list(settings.warnings) == [f"{config_file}: {line}" for line in ODD_LINES]


def test_the_check_lists_all_that_is_wrong_or_unknown(config_file, capsys):
    config_file.write_text(ODD + "limits: {queue: many, body_mb: 0}\n")
    wrong = [
        "limits.body_mb must be a number from 0.001 to 4096, not 0",
        "limits.queue must be a whole number from 0 to 100000, not 'many'",
    ]
    assert check.main([]) == 1
    told = capsys.readouterr().out.splitlines()
    assert told == [f"{config_file}: {line}" for line in [*wrong, *ODD_LINES]]


def test_the_check_looks_into_the_backends(config_file, capsys):
    config_file.write_text("mmc: {cloud: {timeout: soon}, local: 5}\n")
    assert check.main([str(config_file)]) == 1
    assert capsys.readouterr().out.splitlines() == [
        f"{config_file}: mmc.local must be a group of settings",
        f"{config_file}: mmc.cloud.timeout must be a number of at least 0.1, not 'soon'",
    ]


def test_the_check_is_content_with_a_good_file_and_with_none(config_file, capsys):
    assert check.main([]) == 0
    config_file.write_text("server: {port: 8001}\nmmc: {cloud: {api_key: 12345}}\n")
    assert check.main([str(config_file)]) == 0
    assert capsys.readouterr().out == f"{config_file}: the configuration is good\n" * 2


def test_the_check_tells_what_is_no_yaml_and_what_is_not_there(config_file, tmp_path, capsys):
    config_file.write_text("server: [\n")
    assert check.main([]) == 1
    assert f"{config_file}, line 2: " in capsys.readouterr().out
    assert check.main([str(tmp_path / "none.yaml")]) == 1
    assert "not found" in capsys.readouterr().out


def test_no_token_is_replaced_that_could_not_be_shown(config_file):
    token = ensure_api_token()
    config_file.write_text("server: [\n")
    with pytest.raises(ConfigError):
        ensure_api_token(rotate=True)
    assert local_api_token() == token


def test_a_start_and_the_status_warn_of_what_means_nothing(home):
    home.configure(server={"require_tokens": True})
    line = f"{home.config_dir / 'server_config.yaml'}: {ODD_LINES[1]}"
    done = home.call("start_server", port=free_port(), daemon=True)
    assert (done.returncode, done.stderr) == (0, f"Warning: {line}\n")
    assert home.value("get_status")["warnings"] == [line]
    assert line in home.log()
