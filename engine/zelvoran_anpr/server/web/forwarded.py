"""Whom a trusted reverse proxy speaks for, as its X-Forwarded-* headers tell."""

import ipaddress
from collections.abc import Iterable, Sequence
from typing import NamedTuple

from starlette.types import Scope

from ..config.addresses import Address, ip_address

UNIX = "unix"
"""Stands for every proxy that comes through the Unix socket."""
_SCHEMES = ("http", "https")


class Origin(NamedTuple):
    """Where a request began."""

    client: str
    scheme: str


class TrustedProxies:
    """Addresses and networks whose word on their clients is taken; nobody else's is."""

    def __init__(self, listed: Iterable[str]) -> None:
        """Raises ValueError when an entry is no address, no network and not "unix"."""
        names = [name.strip() for name in listed]
        self._unix = UNIX in names
        self._networks = [ipaddress.ip_network(name) for name in names if name != UNIX]

    def origin(self, scope: Scope) -> Origin:
        """Return the client that a request began with, and the scheme it used.

        The last address of the chain was written by the proxy itself; the ones before it are
        believed as long as those who wrote them are trusted as well.
        """
        client = (scope.get("client") or ("",))[0]
        if not self._trusts(client):
            return Origin(client or UNIX, scope["scheme"])
        headers = dict(scope["headers"])
        scheme = headers.get(b"x-forwarded-proto", b"").decode("latin-1").strip().lower()
        return Origin(
            self._first_stranger(_chain(scope["headers"]), client or UNIX),
            scheme if scheme in _SCHEMES else scope["scheme"],
        )

    def _first_stranger(self, chain: Sequence[str], proxy: str) -> str:
        seen = proxy
        for hop in reversed(chain):
            address = ip_address(hop)
            if address is None:
                return seen
            seen = str(address)
            if not self._contains(address):
                return seen
        return seen

    def _trusts(self, client: str) -> bool:
        if not client:
            return self._unix
        address = ip_address(client)
        return address is not None and self._contains(address)

    def _contains(self, address: Address) -> bool:
        return any(address in network for network in self._networks)


def _chain(headers: Iterable[tuple[bytes, bytes]]) -> list[str]:
    lines = [value.decode("latin-1") for name, value in headers if name == b"x-forwarded-for"]
    return [hop.strip() for hop in ",".join(lines).split(",") if hop.strip()]
