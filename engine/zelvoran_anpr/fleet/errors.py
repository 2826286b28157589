"""The error of this room."""


class FleetError(Exception):
    """A run that cannot start or go on; its text is one line that says what to do next."""


def one_line(error: BaseException, longest: int = 300) -> str:
    """Return an error's text on one line, or its type where it has none."""
    text = " ".join(str(error).split()) or type(error).__name__
    return text if len(text) <= longest else text[:longest] + "…"
