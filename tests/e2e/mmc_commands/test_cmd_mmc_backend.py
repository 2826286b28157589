"""mmc-backend: the configuration keeps all it had, and a running server is told."""

import socket
import threading

import processes
import pytest
from put_server import Server

CONFIG = """
from zelvoran_anpr._record import record
import datetime, math
KEPT = {0}

def load_config():
    record("load_config", [], {{}})
    return KEPT

def save_config(*args, **keywords):
    record("save_config", [repr(one) for one in args], keywords)
    assert args[0] is KEPT
    {1}
"""


@pytest.fixture
def server():
    server = Server()
    yield server
    server.close()


@pytest.fixture
def free_port() -> str:
    return str(processes.free_port())


@pytest.fixture
def configured(zv):
    def configure(text: str, saving: str = "pass") -> None:
        zv.engine_file("zelvoran_anpr_server_config.py", CONFIG.format(text, saving))

    zv.configure = configure
    configure("{'mmc': {'backend': 'cloud', 'enabled': False}}")
    return zv


def view(current: str) -> str:
    return f"\nCurrent MMC backend: {current}\nSwitch with: zv-anpr mmc-backend <cloud|local>\n"


def chosen(new: str, old: str) -> str:
    return f"\n✅ MMC backend set to '{new}' in server_config.yaml (was '{old}').\n"


def unreachable(place: str) -> str:
    return f"   (No running server on {place} — change applies on next `zv-anpr server start`.)\n"


@pytest.mark.parametrize(
    "config, current",
    [
        ("{'mmc': {'backend': 'local'}}", "local"),
        ("{'mmc': {'enabled': True}}", "cloud"),
        ("{'mmc': {}}", "cloud"),
        ("{'mmc': None}", "cloud"),
        ("{}", "cloud"),
        ("{'mmc': {'backend': 'something new'}}", "something new"),
    ],
)
def test_view(configured, config, current):
    configured.configure(config)
    assert tuple(configured("mmc-backend")) == (0, view(current), "")
    assert configured.calls() == [["load_config", [], {}]]


SAVED = [
    ("{}", "{'mmc': {'backend': 'local', 'enabled': True}}"),
    ("{'mmc': None, 'a': 1}", "{'mmc': {'backend': 'local', 'enabled': True}, 'a': 1}"),
    ("{'mmc': {}}", "{'mmc': {'backend': 'local', 'enabled': True}}"),
    (
        "{'mmc': {'enabled': False, 'backend': 'cloud', 'key': None}}",
        "{'mmc': {'enabled': True, 'backend': 'local', 'key': None}}",
    ),
    (
        "{1: 2.0, None: float('inf'), 'ü': 10**40, (1, 2): datetime.date(2026, 1, 2),"
        " 'b': b'\\xff', 'l': [1.0, 1, True, None, '\\udc80'], 'm': {0: {False: 1e16}}}",
        "{1: 2.0, None: inf, 'ü': 1" + "0" * 40 + ", (1, 2): datetime.date(2026, 1, 2),"
        " 'b': b'\\xff', 'l': [1.0, 1, True, None, '\\udc80'], 'm': {0: {False: 1e+16}},"
        " 'mmc': {'backend': 'local', 'enabled': True}}",
    ),
]


@pytest.mark.parametrize("before, after", SAVED)
def test_everything_else_is_kept(configured, free_port, before, after):
    """The very object that was loaded is saved again."""
    configured.configure(before)
    status, out, err = configured("mmc-backend", "local", "--port", free_port)
    assert (status, err) == (0, "")
    assert out == chosen("local", "cloud") + unreachable(f"127.0.0.1:{free_port}")
    assert configured.calls() == [["load_config", [], {}], ["save_config", [after], {}]]


def test_the_line_comes_without_a_change_too(configured, free_port):
    out = configured("mmc-backend", "cloud", "--port", free_port).out
    assert out.startswith(chosen("cloud", "cloud"))
    assert "'enabled': True" in configured.calls()[1][1][0]


def test_the_request(configured, server):
    assert tuple(configured("mmc-backend", "local", "--port", server.port)) == (
        0,
        chosen("local", "cloud") + "   ↻ Live server switched to 'local' (no restart needed).\n",
        "",
    )
    [(method, path, headers, body)] = server.seen
    assert (method, path, body) == ("PUT", "/api/mmc/backend", b'{"backend": "local"}')
    assert headers["content-type"] == "application/json"
    assert headers["host"] == f"127.0.0.1:{server.port}"
    assert not [name for name in headers if "token" in name or name == "authorization"]


def test_a_server_that_asks_for_the_token_gets_it(configured, server):
    configured.configure("{}", "pass\n\ndef local_api_token():\n    return 'secret'")
    server.token = "secret"
    out = configured("mmc-backend", "local", "--port", server.port).out
    assert out.endswith("   ↻ Live server switched to 'local' (no restart needed).\n")
    assert [seen[2].get("x-zv-anpr-token") for seen in server.seen] == [None, "secret"]


@pytest.mark.parametrize("token", ["return None", "return 'another'", "raise OSError('locked')"])
def test_a_server_that_refuses_our_token_too(configured, server, token):
    configured.configure("{}", f"pass\n\ndef local_api_token():\n    {token}")
    server.token = "secret"
    out = configured("mmc-backend", "local", "--port", server.port).out
    assert out.endswith(unreachable(f"127.0.0.1:{server.port}"))


def test_an_empty_host_is_this_machine(configured, server):
    out = configured("mmc-backend", "local", "--host", "", "--port", server.port).out
    assert "↻ Live server switched" in out


def test_a_host_by_name(configured, server):
    out = configured("mmc-backend", "local", "--host", "localhost", "--port", server.port).out
    assert "↻ Live server switched" in out
    assert server.seen[0][2]["host"] == f"localhost:{server.port}"


@pytest.mark.parametrize(
    "answer, value",
    [
        (b'{"success": true, "backend": "cloud"}', "cloud"),
        (b'{"backend": 7, "success": 1}', "7"),
        ('{"success": "ja", "backend": "örtlich"}'.encode(), "örtlich"),
    ],
)
def test_the_servers_word_counts(configured, server, answer, value):
    server.answer = answer
    out = configured("mmc-backend", "local", "--port", server.port).out
    assert out.endswith(f"\n   ↻ Live server switched to '{value}' (no restart needed).\n")


@pytest.mark.parametrize("answer", [b"{}", b'{"success": false}', b'{"success": null}'])
def test_a_reported_failure(configured, server, answer):
    server.answer = answer
    out = configured("mmc-backend", "local", "--port", server.port).out
    assert out.endswith("\n   ⚠️  Live switch reported failure; check server logs.\n")


@pytest.mark.parametrize(
    "status, answer",
    [
        (404, b'{"success": true}'),
        (500, b""),
        (302, b'{"success": true}'),
        (200, b""),
        (200, b"<html>"),
        (200, b'["success"]'),
        (200, b'{"success": true, "backend": "\xff"}'),
    ],
)
def test_every_other_failure_is_no_running_server(configured, server, status, answer):
    server.status, server.answer = status, answer
    result = configured("mmc-backend", "local", "--port", server.port)
    assert result.status == 0
    assert result.out == chosen("local", "cloud") + unreachable(f"127.0.0.1:{server.port}")
    assert [call[0] for call in configured.calls()] == ["load_config", "save_config"]


def test_a_server_that_hangs_up(configured):
    with socket.create_server(("127.0.0.1", 0)) as listener:
        port = str(listener.getsockname()[1])

        def hang_up() -> None:
            listener.accept()[0].close()

        thread = threading.Thread(target=hang_up)
        thread.start()
        out = configured("mmc-backend", "local", "--port", port).out
        thread.join()
    assert out.endswith(unreachable(f"127.0.0.1:{port}"))


@pytest.mark.parametrize("host", ["no.such.host.invalid", "bad host", "::1"])
def test_hosts_that_lead_nowhere(configured, free_port, host):
    out = configured("mmc-backend", "local", "--host", host, "--port", free_port).out
    assert out.endswith(unreachable(f"{host}:{free_port}"))


@pytest.mark.parametrize("port", ["-5", "65536", "99999999999999999999"])
def test_ports_that_do_not_exist(configured, port):
    out = configured("mmc-backend", "local", f"--port={port}").out
    assert out.endswith(unreachable(f"127.0.0.1:{port}"))


def test_port_0_and_no_host_are_the_usual_ones(configured):
    """An address that is never this machine's: nothing that runs here is switched."""
    out = configured("mmc-backend", "local", "--host", "192.0.2.1.invalid", "--port", "0").out
    assert out.endswith(unreachable("192.0.2.1.invalid:8000"))


def test_a_failed_save_ends_it(configured, server):
    configured.configure("{}", "raise OSError('disk full')")
    status, out, _ = configured("mmc-backend", "local", "--port", server.port)
    assert (status, out) == (1, "Error: disk full\n")
    assert server.seen == []


def test_a_failed_load_ends_it(configured):
    configured.engine_file(
        "zelvoran_anpr_server_config.py",
        "def load_config():\n    raise ValueError('line 3: no mapping')",
    )
    for words in ([], ["local"]):
        assert tuple(configured("mmc-backend", *words)) == (1, "Error: line 3: no mapping\n", "")


def test_no_configuration_module(configured):
    (configured.engine_folder / "zelvoran_anpr" / "zelvoran_anpr_server_config.py").unlink()
    status, out, _ = configured("mmc-backend")
    assert status == 1
    assert out == "Error: No module named 'zelvoran_anpr.zelvoran_anpr_server_config'\n"


def test_a_choice_outside_the_list_is_a_usage_error(configured):
    status, out, err = configured("mmc-backend", "Local")
    assert (status, out) == (2, "")
    assert "invalid choice" in err
