"""What goes over the pipes: a JSON object and bytes, both with their length before them.

Nothing is unpickled: a reader that a photo has taken over can say nothing that is run here.
"""

import asyncio
import json
import struct
from typing import Any, BinaryIO

_LENGTHS = struct.Struct("<IQ")
_MOST_HEAD = 1 << 20
_MOST_PAYLOAD = 1 << 32

Frame = tuple[dict[str, Any], bytes]


def packed_head(head: dict[str, Any], payload_length: int) -> bytes:
    """Return what goes before a payload of so many bytes."""
    text = json.dumps(head).encode()
    return _LENGTHS.pack(len(text), payload_length) + text


def write_frame(stream: BinaryIO, head: dict[str, Any], payload: bytes = b"") -> None:
    stream.write(packed_head(head, len(payload)))
    stream.write(payload)
    stream.flush()


def read_frame(stream: BinaryIO) -> Frame | None:
    """Return the next frame, or None at the end of the stream."""
    lengths = stream.read(_LENGTHS.size)
    if len(lengths) < _LENGTHS.size:
        return None
    head_length, payload_length = _LENGTHS.unpack(lengths)
    head = json.loads(stream.read(head_length))
    return head, stream.read(payload_length)


async def receive_frame(stream: asyncio.StreamReader, most_payload: int = _MOST_PAYLOAD) -> Frame:
    """Return the next frame. Raises asyncio.IncompleteReadError at the end, and ValueError."""
    head_length, payload_length = _LENGTHS.unpack(await stream.readexactly(_LENGTHS.size))
    if head_length > _MOST_HEAD or payload_length > most_payload:
        raise ValueError("a frame is too long")
    head = _decoded(await stream.readexactly(head_length))
    payload = await stream.readexactly(payload_length) if payload_length else b""
    if not isinstance(head, dict):
        raise ValueError("a frame has no head")
    return head, payload


def _decoded(text: bytes) -> Any:
    try:
        return json.loads(text)
    except RecursionError:
        raise ValueError("a frame's head nests too deeply") from None
