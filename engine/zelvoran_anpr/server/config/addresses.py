"""Which addresses mean this machine."""

import ipaddress

Address = ipaddress.IPv4Address | ipaddress.IPv6Address


def ip_address(text: str) -> Address | None:
    """Return the address that a literal names, or None; brackets and zones are taken off."""
    try:
        address = ipaddress.ip_address(text.strip("[]").partition("%")[0])
    except ValueError:
        return None
    mapped = getattr(address, "ipv4_mapped", None)
    return mapped or address


def is_loopback(host: str) -> bool:
    """Tell whether a host name or literal can only be reached from this machine."""
    address = ip_address(host)
    return address.is_loopback if address else host.strip().rstrip(".").lower() == "localhost"
