"""The commands that hand their work to the engine's server operations: options, order, texts."""

import pytest

NONE = {"host": None, "port": None}


def test_without_a_sub_command_the_help_page_is_printed(zv):
    result = zv("server")
    assert result.status == 0
    assert result.out.startswith(
        "Usage: zv-anpr server <command>\n\nServer lifecycle:\n  start    Start"
    )
    assert result.out.endswith("\n\nRun 'zv-anpr server <command> -h' for command options.\n")


@pytest.mark.parametrize(
    ("module", "name"),
    [
        ("zelvoran_anpr_server_daemon", "get_running_version"),
        ("zelvoran_anpr_server_config", "get_config_dir"),
    ],
)
def test_a_missing_operation_is_told_for_every_command(zv, module, name):
    zv.engine_file(f"{module}.py", "def start_server(**keywords):\n    print('started')\n")
    result = zv("server", "start")
    first, second = result.out.splitlines()
    assert first.startswith("Error: Server dependencies not installed: cannot import name '")
    assert second == "Install with: pip install zelvoran-anpr"
    assert (result.status, zv.calls()) == (0, [])


def test_missing_packages_are_named(zv):
    zv.engine_file("zelvoran_anpr_server_daemon.py", "raise ImportError('missing fastapi')\n")
    assert zv("server", "status").out == (
        "Error: Server dependencies not installed: missing fastapi\n"
        "Install with: pip install zelvoran-anpr\n"
    )


def test_a_broken_module_is_an_error_of_its_own(zv):
    zv.engine_file("zelvoran_anpr_server_daemon.py", "raise RuntimeError('broken')\n")
    result = zv("server", "status")
    assert (result.status, result.out) == (1, "Error: broken\n")


@pytest.mark.parametrize(
    ("words", "call"),
    [
        (
            ["start"],
            ["start_server", {**NONE, "daemon": False, "threads": None, "config_path": None}],
        ),
        (
            [
                "start",
                "--host",
                "localhost",
                "--port",
                "8001",
                "-d",
                "--workers",
                "2",
                "--config",
                "c.yaml",
            ],
            [
                "start_server",
                {
                    "host": "localhost",
                    "port": 8001,
                    "daemon": True,
                    "threads": 2,
                    "config_path": "c.yaml",
                },
            ],
        ),
        (
            ["stop"],
            [
                "stop_server",
                {"force": False, "target_port": None, "target_pid": None, "stop_all": False},
            ],
        ),
        (
            ["stop", "-f", "--port", "8001", "--pid", "77", "--all"],
            [
                "stop_server",
                {"force": True, "target_port": 8001, "target_pid": 77, "stop_all": True},
            ],
        ),
        (["restart"], ["restart_server", {**NONE, "threads": None}]),
        (
            ["restart", "--host", "::", "--port", "1", "--threads", "3"],
            ["restart_server", {"host": "::", "port": 1, "threads": 3}],
        ),
        (["upgrade"], ["upgrade_server", {**NONE, "pip_args": None}]),
        (
            ["upgrade", "--host", "h", "--port", "2", "--pip-args=--pre -q"],
            ["upgrade_server", {"host": "h", "port": 2, "pip_args": "--pre -q"}],
        ),
    ],
)
def test_operations_are_called_by_keyword(zv, words, call):
    result = zv("server", *words)
    assert tuple(result) == (0, "", "")
    name, keywords = call
    assert zv.calls() == [[name, [], keywords]]


@pytest.mark.parametrize("host", ["8001", " 8001 ", "８００１", "0"])
def test_start_asks_back_when_the_host_is_a_port(zv, host):
    assert zv("server", "start", "--host", host).out == (
        f"\n✗ Invalid --host value: '{host}'\n"
        f"   '{host}' looks like a port number, not a hostname.\n"
        f"   Did you mean: zv-anpr server start --port {host} ?\n"
        "   Valid --host examples: 127.0.0.1, localhost, 0.0.0.0, 192.168.1.10\n"
    )
    assert zv.calls() == []


@pytest.mark.parametrize("command", ["restart", "upgrade"])
def test_restart_and_upgrade_ask_back_in_one_line(zv, command):
    result = zv("server", command, "--host", "9000")
    assert result.out == "\n✗ Invalid --host: '9000'. Did you mean --port 9000?\n"
    assert (result.status, zv.calls()) == (0, [])


@pytest.mark.parametrize(
    "host", ["127.0.0.1", "localhost", "", "  ", "a1", "80 01", "-1", "8001x", "::1"]
)
def test_other_hosts_pass(zv, host):
    zv("server", "start", "--host", host)
    assert zv.calls()[0][2]["host"] == host


def test_a_failing_operation_is_an_error_with_status_1(zv):
    zv.server_script(
        "\ndef start_server(**keywords):\n    raise RuntimeError('port 8000 is in use')\n"
    )
    result = zv("server", "start")
    assert (result.status, result.out) == (1, "Error: port 8000 is in use\n")


def test_what_an_operation_prints_keeps_its_place(zv):
    zv.server_script("\ndef stop_server(**keywords):\n    print('Stopped.')\n")
    assert zv("server", "stop").out == "Stopped.\n"


def test_an_operation_may_end_the_program(zv):
    zv.server_script("\ndef start_server(**keywords):\n    raise SystemExit(3)\n")
    assert zv("server", "start").status == 3


LIST = """
class Server:
    def __init__(self, port):
        self.port = port


found = [Server(8000), Server(8001)]


def find_all_servers():
    return found


def print_table(servers):
    assert servers is found
    for server in servers:
        print("table", server.port)
"""


def test_the_table_gets_the_very_objects_that_were_found(zv):
    zv.server_script(LIST)
    assert zv("server", "list").out == "table 8000\ntable 8001\n"
    assert zv.calls() == [
        ["find_all_servers", [], {}],
        ["_print_server_table", [["Server", "Server"]], {}],
    ]


@pytest.mark.parametrize("empty", ["[]", "()", "None"])
def test_an_empty_list(zv, empty):
    zv.server_script(f"\ndef find_all_servers():\n    return {empty}\n")
    assert zv("server", "list").out == "\nNo ANPR servers running.\n"
    assert zv.calls() == [["find_all_servers", [], {}]]


TOKEN = (
    "API token: the-token\n"
    "Dashboard sign-in: http://{}/login#t=the-token\n"
    "Scripts from other machines send it as:  Authorization: Bearer <token>\n"
)


@pytest.mark.parametrize(
    ("config", "address"),
    [
        ("{}", "127.0.0.1:8000"),
        ("{'server': {}}", "127.0.0.1:8000"),
        ("{'server': None}", "127.0.0.1:8000"),
        ("{'server': {'host': None, 'port': None}}", "127.0.0.1:8000"),
        ("{'server': {'host': '192.168.1.10', 'port': 8001}}", "192.168.1.10:8001"),
        ("{'server': {'host': '0.0.0.0', 'port': '81'}}", "127.0.0.1:81"),
        ("{'server': {'host': '::'}}", "127.0.0.1:8000"),
        ("{'server': {'host': ''}}", "127.0.0.1:8000"),
    ],
)
def test_token(zv, config, address):
    zv.server_script(f"\nconfig = {config}\n")
    assert zv("server", "token").out == TOKEN.format(address)
    assert zv.calls() == [["ensure_api_token", [], {"rotate": False}], ["load_config", [], {}]]


def test_token_rotate(zv):
    assert zv("server", "token", "--rotate").out == TOKEN.format("127.0.0.1:8000") + (
        "New token written. Restart the server to use it: zv-anpr server restart\n"
    )
    assert zv.calls()[0] == ["ensure_api_token", [], {"rotate": True}]
