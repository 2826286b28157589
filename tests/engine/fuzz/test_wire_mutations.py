"""What reads the pipes to other processes takes any bytes for an answer, a frame or an error."""

import asyncio
import json
from pathlib import Path

import pytest
from mutations import variants
from zelvoran_anpr.server.workers.frames import packed_head, receive_frame

BRIDGE = Path(__file__).parents[3] / "src" / "python" / "bridge.py"
REQUESTS = [
    b'{"drop": [7], "call": {"$ref": 1}, "args": [3, "x"], "keywords": {"key": [1.5]}, "keep": 0}',
    b'{"drop": [], "call": {"$ref": 1}, "args": [], "keywords": {}, "keep": 1}',
    b'{"value": {"$ref": 2}, "keep": false}',
    b'{"value": {"$ref": 3}, "keep": true}',
    b'{"value": ' + b"[" * 300 + b"]" * 300 + b', "keep": true}',
]
FRAMES = [
    packed_head({"plates": [], "width": 3}, 4) + b"abcd",
    packed_head({}, 0),
    packed_head({"error": "é", "kind": None}, 100) + bytes(100),
    packed_head({"deep": json.loads("[" * 200 + "]" * 200)}, 0),
]


class Host:
    """What the bridge needs of the process that it runs in."""

    def __init__(self) -> None:
        self.objects = {1: lambda *args, **keywords: [args, keywords], 2: {"a": (1, b"x")}, 3: "ü"}
        self.busy = False

    def keep(self, value: object) -> int:
        self.objects[100] = value
        return 100

    def load(self, module: str, name: str) -> None:
        raise ImportError(f"{module}.{name}")


@pytest.fixture
def bridge() -> dict:
    names: dict = {}
    exec(BRIDGE.read_text(), names)
    return names


def test_any_request_has_one_line_of_json_for_an_answer(bridge):
    for line in variants(REQUESTS, 2000, [b'{"$ref": 2}', b"null", b'"keep"', b'"import"']):
        text = bridge["answer"](Host(), line)
        assert text.isascii() and "\n" not in text
        assert set(json.loads(text)) <= {"ok", "error", "exit"}


async def received(data: bytes) -> object:
    stream = asyncio.StreamReader()
    stream.feed_data(data)
    stream.feed_eof()
    return await receive_frame(stream, 1 << 20)


def frame_or_error(data: bytes) -> None:
    try:
        head, payload = asyncio.run(received(data))
    except (ValueError, asyncio.IncompleteReadError):
        return
    assert isinstance(head, dict) and len(payload) <= 1 << 20


def test_any_bytes_are_a_frame_or_an_error():
    for data in variants(FRAMES, 700):
        frame_or_error(data)


def test_a_head_that_nests_deeply_is_an_error():
    text = b"[" * 200_000
    frame_or_error(len(text).to_bytes(4, "little") + bytes(8) + text)
