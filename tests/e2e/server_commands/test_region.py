"""`server region`."""

import pytest
from processes import free_port
from scripted_server import CUT, answer, http

KNOWN = (
    "Available: univ, euplus, eu, asia, africa, oceania, exussr, na, korea, china, japan, "
    "+ country codes\n"
)


@pytest.fixture
def view(ask, server):
    def view(region, regions, *words):
        as_answer = [
            r if r is CUT or isinstance(r, bytes) else answer(r) for r in (region, regions)
        ]
        server.answers = dict(zip(("/api/region", "/api/regions"), as_answer, strict=True))
        return ask("region", *words)

    return view


@pytest.mark.parametrize("words", [(), ("",)])
def test_view(view, server, words):
    groups = {"internal_groups": ["univ", "eup", "na", "kr"]}
    out = view({"default_region": "univ", "active_region": "kr"}, groups, *words)
    assert out == (
        "Region:    univ\nActive:    kr\nAvailable: univ, eup, na, kr, + 80 country codes\n"
    )
    assert server.lines == ["GET /api/region HTTP/1.1", "GET /api/regions HTTP/1.1"]
    assert [request.body for request in server.requests] == [b"", b""]


@pytest.mark.parametrize(
    ("region", "lines"),
    [
        ({"default_region": "univ", "active_region": "univ"}, "Region:    univ\n"),
        ({"default_region": "univ", "active_region": ""}, "Region:    univ\n"),
        ({"default_region": "univ", "active_region": None}, "Region:    univ\n"),
        ({"default_region": None}, "Region:    None\n"),
        ({"active_region": "?"}, "Region:    ?\nActive:    ?\n"),
        ({"default_region": 1, "active_region": 1.0}, "Region:    1\n"),
        ({"default_region": ["a"], "active_region": ["b"]}, "Region:    ['a']\nActive:    ['b']\n"),
        ({}, "Region:    ?\n"),
    ],
)
def test_the_active_region_is_shown_when_it_differs(view, region, lines):
    assert view(region, {"internal_groups": []}) == lines


@pytest.mark.parametrize("regions", [{}, {"internal_groups": []}, {"internal_groups": None}])
def test_no_groups_print_nothing(view, regions):
    assert view({}, regions) == "Region:    ?\n"


@pytest.mark.parametrize(
    "regions",
    [CUT, http("{}", "404 Not Found"), http("x"), ["univ"], {"internal_groups": ["univ", 1]}, None],
)
def test_without_a_list_the_known_regions_are_shown(view, regions):
    assert view({"default_region": "eu"}, regions) == "Region:    eu\n" + KNOWN


@pytest.mark.parametrize("region", [CUT, http("{}", "500 Oh"), http("x"), ["univ"]])
def test_view_failures(view, server, region):
    out = view(region, {})
    assert out.startswith(f"Error: Could not reach server at {server.base} (")
    assert out.count("\n") == 1
    assert len(server.requests) == 1


def test_change(ask, server):
    server.answers["/api/region"] = answer(
        {"success": True, "previous_region": "univ", "current_region": "korea"}
    )
    assert ask("region", "korea") == "Region changed: univ → korea\n"
    (request,) = server.requests
    assert request.line == "PUT /api/region HTTP/1.1"
    assert request.headers["content-type"] == "application/json"
    assert request.body == b'{"region": "korea"}'


def test_the_name_is_sent_as_typed(ask, server):
    server.answers["/api/region"] = answer({})
    ask("region", ' Köln "\U0001f697\\ ')
    assert server.requests[0].body == b'{"region": " K\\u00f6ln \\"\\ud83d\\ude97\\\\ "}'


@pytest.mark.parametrize(
    ("value", "line"),
    [
        ({"success": True, "current_region": "korea"}, "Region changed: None → korea\n"),
        (
            {"success": False, "error": "unknown region"},
            "Failed: {'success': False, 'error': 'unknown region'}\n",
        ),
        ({}, "Failed: {}\n"),
        (
            {"success": None, "tries": [1, 2.0, "it's"]},
            "Failed: {'success': None, 'tries': [1, 2.0, \"it's\"]}\n",
        ),
    ],
)
def test_the_verdict(ask, server, value, line):
    server.answers["/api/region"] = answer(value)
    assert ask("region", "xx") == line


@pytest.mark.parametrize(
    ("reply", "line"),
    [
        (http("{}", "422 Unprocessable Content"), "Error: HTTP Error 422: Unprocessable Content\n"),
        (CUT, "Error: the server closed the connection without an answer\n"),
        (answer([]), "Error: 'list' object has no attribute 'get'\n"),
    ],
)
def test_change_failures(ask, server, reply, line):
    server.answers["/api/region"] = reply
    assert ask("region", "kr") == line


def test_change_without_a_server(zv):
    out = zv("server", "region", "kr", "--port", str(free_port())).out
    assert out == "Error: [Errno 111] Connection refused\n"
