"""The one failure type of make/model/colour: its text is one line that says what to do next."""


class MmcError(RuntimeError):
    """Setting up, starting or asking a make/model/colour backend failed."""
