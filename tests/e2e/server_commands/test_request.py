"""What every request to the server has in common: address, token, kinds of answers."""

import signal

import pytest
from scripted_server import SILENCE, answer, http

REPORT = "MMC:       Unavailable\nUsage:     0/0 today (0 remaining)\n"
REPORT += "Note:      MMC requires internet. Restart server when online.\n"


def token_is(zv, expression):
    zv.server_script(f"\ndef local_api_token():\n    {expression}\n")


def test_the_token_is_asked_for_on_every_request(zv, ask, server):
    token_is(zv, "return 'secret-1'")
    server.answers = {"/api/region": answer({}), "/api/regions": answer({})}
    ask("region")
    assert [r.headers["x-zv-anpr-token"] for r in server.requests] == ["secret-1"] * 2
    assert zv.calls().count(["local_api_token", [], {}]) == 2


@pytest.mark.parametrize(
    "expression",
    ["return None", "return ''", "raise RuntimeError('locked')", "raise OSError(13, 'no')"],
)
def test_without_a_token_the_request_goes_out_all_the_same(zv, ask, server, expression):
    token_is(zv, expression)
    server.answers["/api/mmc/status"] = answer({})
    assert ask("mmc") == REPORT
    assert "x-zv-anpr-token" not in server.requests[0].headers


def test_a_configuration_module_without_a_token_source_is_no_obstacle(zv, ask, server):
    zv.engine_file("zelvoran_anpr_server_config.py", "def get_config_dir():\n    return ''\n")
    server.answers["/api/mmc/status"] = answer({})
    assert ask("mmc") == REPORT


def test_a_plain_get_is_exact(ask, server):
    server.answers["/api/mmc/status"] = answer({})
    ask("mmc")
    (request,) = server.requests
    assert request.body == b""
    assert request.head.decode() == (
        "GET /api/mmc/status HTTP/1.1\r\n"
        f"Host: 127.0.0.1:{server.port}\r\n"
        "User-Agent: zv-anpr\r\nAccept-Encoding: identity\r\nConnection: close"
    )


CHUNKED = b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1\r\n{\r\n1\r\n}\r\n0\r\n\r\n"


@pytest.mark.parametrize(
    "reply",
    [
        CHUNKED,
        b"HTTP/1.1 200 OK\r\n\r\n{}",
        b"HTTP/1.0 200 OK\r\nServer: old\r\n\r\n{}",
        http(b"\n {} \n", "201 Created"),
    ],
)
def test_answers_of_every_transfer_form_are_read(ask, server, reply):
    server.answers["/api/mmc/status"] = reply
    assert ask("mmc") == REPORT


@pytest.mark.parametrize("proxy", ["http_proxy", "HTTP_PROXY", "all_proxy"])
def test_proxies_are_not_used(zv, server, proxy):
    server.answers["/api/mmc/status"] = answer({})
    result = zv("server", "mmc", "--port", str(server.port), env={proxy: "http://127.0.0.1:9"})
    assert result.out == REPORT


def test_host_and_port_are_used_as_given(zv, server):
    server.answers["/api/mmc/status"] = answer({})
    for host in ("localhost", "0.0.0.0"):
        assert zv("server", "mmc", "--host", host, "--port", str(server.port)).out == REPORT
        assert server.requests[-1].headers["host"] == f"{host}:{server.port}"


@pytest.mark.parametrize("words", [("health",), ("detect", "car.jpg"), ("region", "kr")])
def test_ctrl_c_ends_a_request_with_status_1(zv, server, words):
    (zv.folder / "car.jpg").write_bytes(b"x")
    paths = ("/api/health?detailed=true", "/api/anpr", "/api/region")
    server.answers = dict.fromkeys(paths, SILENCE)
    process = zv.popen("server", *words, "--port", str(server.port))
    server.before_answer = lambda: process.send_signal(signal.SIGINT)
    out, err = process.communicate(timeout=30)
    assert (process.returncode, out.decode(), err.decode()) == (1, "\nOperation cancelled.\n", "")


@pytest.mark.parametrize("words", [("mmc",), ("health",), ("region", "x"), ("detect", "x.jpg")])
def test_every_command_first_loads_the_daemon_operations(zv, words):
    (zv.folder / "x.jpg").write_bytes(b"x")
    zv.engine_file("zelvoran_anpr_server_daemon.py", "def start_server():\n    pass\n")
    result = zv("server", *words)
    assert result.status == 0
    first, second = result.out.splitlines()
    assert first.startswith(
        "Error: Server dependencies not installed: cannot import name 'stop_server'"
    )
    assert second == "Install with: pip install zelvoran-anpr"
