"""What the tests ask about processes that they did not start themselves."""


def alive(pid: int) -> bool:
    """A process that has ended counts as gone, even where its parent never asks for its status."""
    try:
        with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as stat:
            return stat.read().rsplit(")", 1)[1].split()[0] not in "ZX"
    except (FileNotFoundError, ProcessLookupError):
        return False
