"""What is asked about a vehicle, the shape of the answer, and its three fields as clean text."""

import base64
import json
import unicodedata
from collections.abc import Mapping
from typing import Any

from ..errors import MmcError

FIELDS = ("make", "model", "color")
COLORS = (
    "black", "white", "silver", "gray", "red", "blue", "green", "yellow",
    "orange", "brown", "beige", "gold", "purple", "pink", "unknown",
)  # fmt: skip
_UNKNOWN = {"", "unknown", "n/a", "none", "null", "not visible", "unclear"}
_LONGEST_FIELD = 40
# The longest answer that the schema admits, spelt out byte by byte, fits.
_MOST_TOKENS = 400

_SCHEMA = {
    "type": "object",
    "properties": {
        "make": {"type": "string", "minLength": 1, "maxLength": _LONGEST_FIELD},
        "model": {"type": "string", "minLength": 1, "maxLength": _LONGEST_FIELD},
        "color": {"type": "string", "enum": list(COLORS)},
    },
    "required": list(FIELDS),
    "additionalProperties": False,
}
_PROMPT = (
    "Identify the vehicle whose licence plate is in the lower middle of this picture."
    " Give its manufacturer as make, its model name without the make, and its main body color."
    " Write unknown for whatever the picture does not show clearly."
)


def chat_request(jpeg: bytes) -> dict[str, Any]:
    """The body of one `/v1/chat/completions` call that admits only the schema's answers."""
    picture = "data:image/jpeg;base64," + base64.b64encode(jpeg).decode("ascii")
    content = [
        {"type": "image_url", "image_url": {"url": picture}},
        {"type": "text", "text": _PROMPT},
    ]
    return {
        "messages": [{"role": "user", "content": content}],
        "temperature": 0,
        "max_tokens": _MOST_TOKENS,
        "response_format": {
            "type": "json_schema",
            "json_schema": {"name": "vehicle", "strict": True, "schema": _SCHEMA},
        },
    }


def from_chat(answer: Any) -> dict[str, str]:
    """Make, model and color from a chat completion; raises MmcError when it holds none."""
    try:
        choice = answer["choices"][0]
        fields = json.loads(choice["message"]["content"])
    except (KeyError, IndexError, TypeError, ValueError):
        raise MmcError("the model gave no usable answer for this vehicle") from None
    return clean(fields)


def clean(fields: Any) -> dict[str, str]:
    """The three fields as one-line text, empty for unknown; raises MmcError for no mapping."""
    if not isinstance(fields, Mapping):
        raise MmcError("the answer about the vehicle is not an object with make, model and color")
    return {name: _text(fields.get(name)) for name in FIELDS}


def _text(value: Any) -> str:
    if not isinstance(value, str):
        return ""
    printable = "".join(" " if unicodedata.category(c)[0] in "CZ" else c for c in value)
    line = " ".join(printable.split())[:_LONGEST_FIELD].strip()
    return "" if line.casefold() in _UNKNOWN else line
