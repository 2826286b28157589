"""`server status`: the two probes and what is made of their answers."""

import pytest
from processes import free_port
from scripted_server import CUT, SILENCE, answer, http

HEALTH = "/api/health?detailed=true"
MMC = "/api/mmc/status"


def prepared(value):
    """Bytes as they go over the wire, or a list of such."""
    return (isinstance(value, list) and prepared(value[0])) or isinstance(value, bytes)


@pytest.fixture
def status(zv, server):
    """Runs `server status` on a server that answers so; the lines after PID and URL."""

    def status(health, mmc=CUT, installed="3.2.1"):
        as_answer = [v if v in (CUT, SILENCE) or prepared(v) else answer(v) for v in (health, mmc)]
        server.answers = dict(zip((HEALTH, MMC), as_answer, strict=True))
        zv.server_script(
            "\ndef get_status():\n"
            f"    return {{'running': True, 'pid': 77, 'url': '{server.base}'}}\n"
            f"\ndef get_installed_version():\n    return {installed!r}\n"
            "\ndef local_api_token():\n    return 'secret'\n"
        )
        result = zv("server", "status")
        first, second, *rest = result.out.splitlines()
        assert (first, second) == ("Server running (PID: 77)", f"  URL: {server.base}")
        assert (result.status, result.err) == (0, "")
        return rest

    return status


def test_no_server(zv):
    zv.server_script(
        "\ndef get_status():\n    return {'running': False, 'pid': None, 'url': None}\n"
    )
    assert zv("server", "status").out == (
        "Server is not running\n  Installed version: 3.2.1\n"
        "  Start with: zv-anpr server start --daemon\n"
    )
    assert zv.calls() == [["get_status", [], {}], ["get_installed_version", [], {}]]


def test_all_details(status, server):
    health = {
        "version": "3.2.1",
        "detector_version": "v17",
        "sdk_version": "17.1",
        "ocr_version": "v17b",
        "region": "univ",
        "threads": 4,
        "requests_served": 120,
        "errors": 0,
        "uptime": 150,
        "health_check": {"healthy": True, "memory_mb": 312.5},
        "mmc_available": True,
    }
    mmc = {"mmc_calls_today": 12, "mmc_daily_limit": 500, "mmc_remaining": 488, "error": ""}
    assert status(health, mmc) == [
        "  Version:  3.2.1",
        "  Detector: v17 (17.1)",
        "  OCR:      v17b",
        "  Region:   univ",
        "  Threads:  4",
        "  Requests: 120",
        "  Errors:   0",
        "  Uptime:   2m",
        "  Health:   OK",
        "  Memory:   312 MB",
        "  MMC:      Available (12/500 today, 488 remaining)",
    ]
    assert server.lines == [f"GET {HEALTH} HTTP/1.1", f"GET {MMC} HTTP/1.1"]
    assert all("x-zv-anpr-token" not in request.headers for request in server.requests)


def test_a_server_that_asks_for_the_token_gets_it(status, server):
    refused = http("{}", "401 Unauthorized")
    lines = status([refused, answer({"mmc_enabled": 1})], [refused, answer({})])
    assert lines == [*DEFAULTS, "  MMC:      Available (0/0 today, 0 remaining)"]
    sent = [request.headers.get("x-zv-anpr-token") for request in server.requests]
    assert sent == [None, "secret", None, "secret"]


DEFAULTS = [
    "  Version:  ?",
    "  Detector: ? (?)",
    "  OCR:      ?",
    "  Region:   ?",
    "  Threads:  ?",
    "  Requests: 0",
    "  Errors:   0",
    "  Uptime:   0s",
]


def test_an_empty_answer_is_filled_with_defaults(status, server):
    assert status({}) == DEFAULTS
    assert len(server.requests) == 1


def test_null_is_shown_as_such(status):
    assert status({"region": None, "version": "?"})[3] == "  Region:   None"


@pytest.mark.parametrize(
    ("check", "lines"),
    [
        ({"healthy": False, "memory_mb": 0}, ["  Health:   UNHEALTHY"]),
        ({"memory_mb": 2.5}, ["  Health:   UNHEALTHY", "  Memory:   2 MB"]),
        ({"healthy": True}, ["  Health:   OK"]),
        (None, []),
        ([1], []),
        ({"healthy": True, "memory_mb": "x"}, ["  Health:   OK"]),
    ],
)
def test_the_health_check(status, check, lines):
    assert status({"health_check": check})[8:] == lines


@pytest.mark.parametrize(
    ("mmc", "line"),
    [
        ({"error": "no key"}, "Error - no key"),
        ({"error": None}, "Available (0/0 today, 0 remaining)"),
        (
            {"mmc_calls_today": None, "mmc_daily_limit": 1.5},
            "Available (None/1.5 today, 0 remaining)",
        ),
        (CUT, "Available (quota unknown)"),
        (http("x"), "Available (quota unknown)"),
        (http("{}", "404 Not Found"), "Available (quota unknown)"),
    ],
)
def test_mmc(status, mmc, line):
    assert status({"mmc_enabled": True}, mmc) == [*DEFAULTS, f"  MMC:      {line}"]


def test_a_false_mmc_available_does_not_fall_back(status, server):
    assert status({"mmc_available": False, "mmc_enabled": True}) == DEFAULTS
    assert len(server.requests) == 1


MISMATCH = [
    "  WARNING: Version mismatch!",
    "    Running server:    3.1.0",
    "    Installed package: 3.2.1",
    "    Run: zv-anpr server upgrade",
]


def test_another_version_is_warned_about(status):
    assert status({"version": "3.1.0", "mmc_enabled": 1})[-5:] == [
        "  MMC:      Available (quota unknown)",
        *MISMATCH,
    ]


@pytest.mark.parametrize("version", ["3.2.1", "?", "unknown"])
def test_no_warning(status, version):
    assert status({"version": version})[1:] == DEFAULTS[1:]


@pytest.mark.parametrize(
    "health",
    [CUT, http("{}", "503 Loading"), http("<html>"), [1], http(b"{}", "302 Found", "Location: /")],
)
def test_a_failed_probe_leaves_pid_and_address(status, health):
    assert status(health, installed="9.9") == []


def test_lines_before_a_wrong_value_stay(status):
    lines = status({"version": "3.1.0", "uptime": "long", "mmc_enabled": True})
    assert lines == ["  Version:  3.1.0", *DEFAULTS[1:7]]


def test_a_server_that_never_answers_is_given_up(status):
    assert status(SILENCE) == []


def test_a_dead_address(zv):
    url = f"http://127.0.0.1:{free_port()}"
    zv.server_script(f"\ndef get_status():\n    return dict(running=1, pid='x', url={url!r})\n")
    assert zv("server", "status").out == f"Server running (PID: x)\n  URL: {url}\n"


def test_a_failing_operation_is_an_error(zv):
    zv.server_script("\ndef get_status():\n    raise OSError('records unreadable')\n")
    result = zv("server", "status")
    assert (result.status, result.out) == (1, "Error: records unreadable\n")
