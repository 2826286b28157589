"""`server health` and `server mmc`."""

import json

import pytest
from processes import free_port
from scripted_server import CUT, answer, http

PATH = "/api/health?detailed=true"
MMC = "/api/mmc/status"
FULL = {
    "status": "ok",
    "version": "3.2.1",
    "sdk_version": "17.1",
    "detector_version": "v17",
    "ocr_version": "v17",
    "region": "univ",
    "threads": 4,
    "requests_served": 120,
    "errors": 2,
    "uptime": 5400,
    "health_check": {"healthy": True, "memory_mb": 312.4},
    "mmc_available": True,
}


@pytest.fixture
def health(ask, server):
    def health(value):
        server.answers[PATH] = value if isinstance(value, bytes) else answer(value)
        return ask("health")

    return health


def test_the_whole_report(health, server):
    assert health(FULL) == (
        "Status:    ok\nVersion:   3.2.1\nSDK:       17.1\nDetector:  v17\nOCR:       v17\n"
        "Region:    univ\nThreads:   4\nRequests:  120\nErrors:    2\nUptime:    1.5h\n"
        "Healthy:   Yes\nMemory:    312 MB\nMMC:       Available\n"
    )
    assert server.lines == ["GET /api/health?detailed=true HTTP/1.1"]


def test_an_empty_answer_is_filled_with_defaults(health):
    assert health({}) == (
        "Status:    ?\nVersion:   ?\nSDK:       ?\nDetector:  ?\nOCR:       ?\nRegion:    ?\n"
        "Threads:   ?\nRequests:  0\nErrors:    0\nUptime:    0s\nMMC:       Unavailable\n"
    )


@pytest.mark.parametrize(
    ("value", "shown"),
    [
        (None, "None"),
        (True, "True"),
        (4.0, "4.0"),
        (1e16, "1e+16"),
        (10**30, str(10**30)),
        (["a", {"b": None}], "['a', {'b': None}]"),
        ("ü", "ü"),
    ],
)
def test_values_are_rendered_plainly(health, value, shown):
    assert f"\nThreads:   {shown}\n" in health({"threads": value})


@pytest.mark.parametrize(
    ("uptime", "shown"),
    [
        (59.6, "60s"),
        (0.5, "0s"),
        (60, "1m"),
        (150, "2m"),
        (3599, "60m"),
        (3600, "1.0h"),
        (259200, "72.0h"),
    ],
)
def test_uptime(health, uptime, shown):
    assert f"\nUptime:    {shown}\n" in health({"uptime": uptime})


@pytest.mark.parametrize("uptime", ["12", None, [1]])
def test_lines_before_a_wrong_uptime_stay(health, server, uptime):
    lines = health({**FULL, "uptime": uptime}).splitlines()
    assert lines[8] == "Errors:    2"
    assert lines[9].startswith(f"Error: Could not reach server at {server.base} (")
    assert len(lines) == 10


@pytest.mark.parametrize(
    ("check", "lines"),
    [
        ({"healthy": False, "memory_mb": 0}, ["Healthy:   No"]),
        ({"memory_mb": 99.5}, ["Healthy:   No", "Memory:    100 MB"]),
        ({"healthy": 1, "memory_mb": None}, ["Healthy:   Yes"]),
        ({}, []),
        (None, []),
        (0, []),
    ],
)
def test_the_health_check(health, check, lines):
    assert health({"health_check": check}).splitlines()[10:-1] == lines


@pytest.mark.parametrize("check", [[1], "fine", {"healthy": True, "memory_mb": "much"}])
def test_a_wrong_health_check_ends_the_report(health, server, check):
    last = health({"health_check": check}).splitlines()[-1]
    assert last.startswith(f"Error: Could not reach server at {server.base} (")


@pytest.mark.parametrize(
    ("keys", "shown"),
    [
        ({"mmc_available": False, "mmc_enabled": True}, "Unavailable"),
        ({"mmc_available": None, "mmc_enabled": True}, "Unavailable"),
        ({"mmc_enabled": True}, "Available"),
        ({"mmc_available": "yes"}, "Available"),
    ],
)
def test_mmc_enabled_counts_only_without_mmc_available(health, keys, shown):
    assert health(keys).endswith(f"\nMMC:       {shown}\n")


FAILURES = [
    (http("{}", "401 Unauthorized"), "HTTP Error 401: Unauthorized"),
    (http("{}", "503 Service Unavailable"), "HTTP Error 503: Service Unavailable"),
    (http("", "301 Moved Permanently", "Location: /"), "HTTP Error 301: Moved Permanently"),
    (http("<html>"), "the answer is not JSON"),
    (http(json.dumps(FULL) + "{}"), "the answer is not JSON"),
    (http(b'{"status": "\xe4"}'), "the answer is not JSON"),
    (http(b""), "the answer is not JSON"),
    (answer(["ok"]), "'list' object has no attribute 'get'"),
    (answer("ok"), "'str' object has no attribute 'get'"),
    (answer(None), "'NoneType' object has no attribute 'get'"),
    (CUT, "the server closed the connection without an answer"),
    (b"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n{", "the connection was cut in the middle"),
    (b"nonsense\r\n\r\n", "the answer is no well-formed HTTP"),
]


@pytest.mark.parametrize(("path", "command"), [(PATH, "health"), (MMC, "mmc")])
@pytest.mark.parametrize(("reply", "text"), FAILURES)
def test_failures_are_one_line(ask, server, path, command, reply, text):
    server.answers[path] = reply
    out = ask(command)
    assert out.startswith(f"Error: Could not reach server at {server.base} ({text}")
    assert out.endswith(")\n") and out.count("\n") == 1


@pytest.mark.parametrize("command", ["health", "mmc", "region"])
def test_no_server(zv, command):
    port = free_port()
    result = zv("server", command, "--port", str(port))
    base = f"http://127.0.0.1:{port}"
    line = f"Error: Could not reach server at {base} ([Errno 111] Connection refused)\n"
    assert (result.status, result.out) == (0, line)


def test_mmc_available(ask, server):
    server.answers[MMC] = answer(
        {"available": True, "mmc_calls_today": 12, "mmc_daily_limit": 500, "mmc_remaining": 488}
    )
    assert ask("mmc") == (
        "MMC:       Available\nUsage:     12/500 today (488 remaining)\n"
        "Detect:    zv-anpr server detect car.jpg --mmc\n"
    )
    assert server.lines == ["GET /api/mmc/status HTTP/1.1"]


def test_mmc_values_are_rendered_plainly(ask, server):
    server.answers[MMC] = answer(
        {"available": [], "mmc_calls_today": None, "mmc_daily_limit": 5.0, "mmc_remaining": "many"}
    )
    assert ask("mmc") == (
        "MMC:       Unavailable\nUsage:     None/5.0 today (many remaining)\n"
        "Note:      MMC requires internet. Restart server when online.\n"
    )


def test_an_answer_cannot_forge_lines_or_steer_the_terminal(zv, health, server):
    forged = {**FULL, "status": "ok\nVersion:   9\x1b[2J"}
    assert health(forged).startswith("Status:    ok\nVersion:   9\x1b[2J\nVersion:   3.2.1\n")
    shown = zv.on_terminal("server", "health", "--port", str(server.port))
    assert shown.startswith("Status:    ok\\nVersion:   9\\x1b[2J\nVersion:   3.2.1\n")
