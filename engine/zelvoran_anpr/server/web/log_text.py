"""What clients send, cut to what a log line has room for."""

_MOST = 200


def shown(text: str) -> str:
    """Return the beginning of a text and how much was left out."""
    left_out = len(text) - _MOST
    return text if left_out <= 0 else f"{text[:_MOST]}...(+{left_out})"
