"""Whatever stands in the configuration, it is read, or refused with one line, and never lost."""

import pytest
from mutations import variants
from zelvoran_anpr.server.config.config_file import ConfigError, load_config, save_config
from zelvoran_anpr.server.config.settings import load_settings

SEEDS = [
    b"server:\n  port: 8001 # mine\n  host: 0.0.0.0\n# between\nlimits:\n  body_mb: 2.5\n",
    b"server: {port: 8001, allowed_hosts: [a, 'b', \"c\"]}\nmmc:\n  local: &l {ctx: 1}\n  b: *l\n",
    b"mmc:\n- 1\n- {a: b}\nserver:\n    threads: !!int '3'\n    when: 2020-01-01 10:00:00\n",
    b"\xef\xbb\xbfserver:\r\n  region: \"\\ud83d\"\r\n  log_format: |\r\n    json\r\n",
    b"a: &a [x]\nb: &b [*a, *a]\nc: &c [*b, *b]\n? [k]\n: v\n<<: {server: 1}\n",
]  # fmt: skip
TOKENS = [b"server:", b"\n  ", b": ", b"- ", b"&a ", b"*a", b"<<: ", b"? ", b"!!set ", b"true",
          b"|\n", b"'", b"---\n", b"%YAML 9\n", b"1e999", b".nan", b"0x", b"\t", b"#"]  # fmt: skip


def one_line(error: Exception) -> bool:
    return "\n" not in str(error) and len(str(error)) < 2000


def changed(config: dict) -> dict:
    section = config.get("server")
    return {**config, "server": {**(section if isinstance(section, dict) else {}), "port": 8002}}


@pytest.mark.parametrize("seed", SEEDS)
def test_any_text_is_a_configuration_or_an_error(seed, tmp_path):
    file = tmp_path / "server_config.yaml"
    for text in variants([seed], 250, TOKENS):
        file.write_bytes(text)
        try:
            config = load_config(file)
            save_config(changed(config), file)
            assert load_config(file)["server"]["port"] == 8002
        except ConfigError as error:
            assert one_line(error)
            assert file.read_bytes() == text
        try:
            load_settings(str(file), {})
        except ConfigError as error:
            assert one_line(error)
