"""The local backend against a real process that speaks llama-server's protocol."""

import threading
import time
from pathlib import Path

import pytest
from local_servers import photo, server_pid
from processes import wait_until
from zelvoran_anpr.mmc import MmcError
from zelvoran_anpr.mmc.serve import local


def test_a_vehicle_is_recognised_from_its_own_picture(make_local):
    backend = make_local()
    backend.start()
    red = backend.recognise(photo((250, 5, 5)))
    assert red == {"make": "Double", "model": "60x40", "color": "red"}
    assert backend.recognise(photo((5, 5, 250)))["color"] == "blue"
    assert backend.name == "local" and backend.available()
    assert backend.status() == {
        "available": True,
        "backend": "local",
        "mmc_calls_today": 2,
        "mmc_daily_limit": "unlimited",
        "mmc_remaining": "unlimited",
    }


def test_a_large_picture_is_made_smaller(make_local):
    backend = make_local()
    backend.start()
    assert backend.recognise(photo((0, 255, 0), 3000, 1500))["model"] == "384x768"


def test_the_key_is_not_on_the_command_line_and_is_needed(make_local, local_config):
    import http.client

    backend = make_local()
    backend.start()
    line = Path(f"/proc/{server_pid(local_config)}/cmdline").read_bytes().decode().split("\0")
    assert "--api-key" not in line and backend._key not in " ".join(line)
    assert line[line.index("--host") + 1] == "127.0.0.1"
    connection = http.client.HTTPConnection("127.0.0.1", backend._supervisor.port())
    connection.request("POST", "/v1/chat/completions", b"{}", {"Authorization": "Bearer wrong"})
    assert connection.getresponse().status == 401
    connection.close()


def test_stop_waits_for_the_request_under_way(make_local, steer):
    steer(slow=0.6)
    backend = make_local()
    backend.start()
    answers = []
    asking = threading.Thread(target=lambda: answers.append(backend.recognise(photo((250, 0, 0)))))
    asking.start()
    wait_until(backend._gate.busy)
    backend.stop()
    asking.join()
    assert answers[0]["color"] == "red"


def test_many_threads_share_it(make_local):
    backend = make_local()
    backend.start()
    answers: dict[int, dict] = {}

    def ask(width: int) -> None:
        answers[width] = backend.recognise(photo((0, 0, 250), 50, width))

    threads = [threading.Thread(target=ask, args=(w,)) for w in range(60, 76)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert {w: a["model"] for w, a in answers.items()} == {w: f"{w}x50" for w in range(60, 76)}
    assert backend.status()["mmc_calls_today"] == 16


@pytest.mark.parametrize(
    ("content", "expected"),
    [
        ('{"make": " BMW\\n", "model": "unknown", "color": "N/A"}', ("BMW", "", "")),
        ('{"make": null, "model": 3, "color": "red", "extra": 1}', ("", "", "red")),
        (
            '{"make": "\\u0160koda\\u0000 x", "model": "' + "m" * 99 + '"}',
            ("Škoda x", "m" * 40, ""),
        ),
    ],
)
def test_what_the_model_says_is_cleaned(make_local, steer, content, expected):
    steer(content=content)
    backend = make_local()
    backend.start()
    assert tuple(backend.recognise(photo((0, 0, 0))).values()) == expected


@pytest.mark.parametrize("content", ["no JSON", '{"make": "BM', "[]", '"red"'])
def test_an_answer_that_is_none_is_told(make_local, steer, content):
    steer(content=content)
    backend = make_local()
    backend.start()
    with pytest.raises(MmcError, match="answer"):
        backend.recognise(photo((0, 0, 0)))


def test_a_refused_request_is_told(make_local, monkeypatch):
    monkeypatch.setattr(local, "chat_request", lambda jpeg: {"messages": []})
    backend = make_local()
    backend.start()
    with pytest.raises(MmcError, match="llama-server answered 400: IndexError"):
        backend.recognise(photo((0, 0, 0)))


def test_a_slow_answer_is_given_up(make_local, steer):
    steer(slow=30)
    backend = make_local(request_timeout=1)
    backend.start()
    started = time.monotonic()
    with pytest.raises(MmcError, match="it stopped answering"):
        backend.recognise(photo((0, 0, 0)))
    assert time.monotonic() - started < 15


def test_proxies_are_not_asked_for_loopback(make_local, monkeypatch):
    monkeypatch.setenv("http_proxy", "http://127.0.0.1:1")
    backend = make_local()
    backend.start()
    assert backend.recognise(photo((250, 0, 0)))["color"] == "red"
