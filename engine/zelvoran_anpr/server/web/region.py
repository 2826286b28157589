"""The region that plates are read for: the configured one, and the one in use."""

from ...region_aliases import INTERNAL_GROUPS, to_api_region, to_internal_region
from ...region_countries import COUNTRIES


class RegionChoice:
    """Names are the API's, such as "korea"; see `region_aliases` for what is understood."""

    def __init__(self, configured: str) -> None:
        """Raises ValueError with one line when the name is not known."""
        self.default = to_api_region(configured)
        self.active = self.default

    def change(self, name: str) -> str:
        """Read for another region until the server ends; return the one before.

        Raises ValueError with one line.
        """
        previous, self.active = self.active, to_api_region(name)
        return previous

    def known(self, name: str) -> str:
        """Return the API's name for what a client calls a region. Raises ValueError."""
        return to_api_region(name)


def internal_name(name: str) -> str:
    """Return the engine's name for a region. Raises ValueError with one line."""
    return to_internal_region(name)


def groups() -> list[dict[str, str]]:
    """Return every region group with the engine's and the API's name."""
    return [{"code": code, "name": to_api_region(code)} for code in INTERNAL_GROUPS]


def countries() -> list[dict[str, str]]:
    """Return every country with its code, its name and the group whose plates it has."""
    return [
        {"code": code, "name": names[0], "group": group}
        for code, (group, names) in COUNTRIES.items()
    ]
