"""Every option of server_config.yaml with its default, its check and its one-line note."""

from dataclasses import dataclass, fields
from typing import Any

from ...mmc.serve.settings import CloudSettings, LocalSettings
from ...options import flag, number, option, text, text_or_nothing, texts, whole
from .checks import log_format, networks, origins
from .checks import region as region_name


@dataclass(frozen=True)
class ServerOptions:
    """The `server` section."""

    host: str = option("127.0.0.1", text, "address to listen on; 0.0.0.0 for every network")
    port: int = option(8000, whole(1, 65535), "port to listen on")
    threads: int = option(4, whole(1, 256), "photos read at the same time")
    backend: str = option("cpu", text, "cpu, cuda or directml")
    detector_model: str = option("640p_fp32", text, "320p_fp32 or 640p_fp32")
    ocr_model: str = option("fp32", text, "fp32 or int8")
    region: str = option(
        "univ", region_name, "plates to expect: univ, euplus, na, korea, de, us, ..."
    )
    allowed_hosts: list[str] = option([], texts, "further names that clients reach this server by")
    unix_socket: str = option("", text_or_nothing, "a Unix socket to listen on as well")
    log_format: str = option("text", log_format, "text or json")
    trusted_proxies: list[str] = option(
        [], networks, "addresses of reverse proxies whose X-Forwarded-For is believed"
    )
    cors_origins: list[str] = option([], origins, "origins whose pages may call, with a token")
    require_token: bool = option(False, flag, "ask programs on this machine for the token too")


@dataclass(frozen=True)
class MmcOptions:
    """The `mmc` section, less those of its backends."""

    enabled: bool = option(True, flag, "recognise make, model and colour on request")
    backend: str = option("cloud", text, "cloud or local")
    threads: int = option(2, whole(1, 64), "vehicles recognised at the same time")


@dataclass(frozen=True)
class Limits:
    """The `limits` section; what ends in `_seconds` says how long."""

    body_mb: float = option(20, number(0.001, 4096), "largest upload, in MB")
    uploads_mb: float = option(200, number(0.001, 65536), "all uploads at the same time, in MB")
    unpack_mb: float = option(450, number(1, 1e6), "photos unpacked at the same time, in MB")
    megapixels: float = option(50, number(0.001, 1000), "largest photo")
    queue: int = option(32, whole(0, 100000), "photos that may wait; more are answered with 429")
    batch: int = option(16, whole(1, 1000), "photos in one request to /api/anpr/batch")
    client_photos: int = option(
        0, whole(0, 100000), "photos of one address at the same time; 0 for no limit"
    )
    client_requests: int = option(
        0, whole(0, 10**6), "requests of one address in a minute; 0 for no limit"
    )
    header_seconds: float = option(10, number(0.1, 3600), "for a client to send its request line")
    body_seconds: float = option(60, number(0.1, 3600), "for a client to send its photo")
    request_seconds: float = option(
        30, number(0.1, 3600), "for reading one photo, waiting included"
    )
    mmc_seconds: float = option(110, number(0.1, 3600), "for a request with make, model and colour")
    connections: int = option(512, whole(8, 100000), "clients connected at the same time")
    start_seconds: float = option(120, number(1, 3600), "for a background server to become ready")
    stop_seconds: float = option(20, number(0.1, 3600), "for requests under way when stopping")
    drain_seconds: float = option(
        0, number(0, 3600), "for which /readyz is 503 before the port closes"
    )
    log_mb: float = option(10, number(0.001, 10000), "size at which server.log is rotated")
    log_files: int = option(5, whole(1, 100), "rotated logs that are kept")


SECTIONS: dict[str, type] = {"server": ServerOptions, "mmc": MmcOptions, "limits": Limits}
BACKENDS: dict[str, type] = {"local": LocalSettings, "cloud": CloudSettings}
"""The groups within the `mmc` section; they are checked when their backend starts."""


def default_config() -> dict[str, dict[str, Any]]:
    """Return a fresh configuration that holds every option with its default."""
    return {name: vars(section()) for name, section in SECTIONS.items()}


def default_text() -> str:
    """Return the defaults as a commented YAML text: what a first save starts from."""
    lines = ["# Zelvoran ANPR server. Every line may be left out; these are the defaults."]
    for name, section in SECTIONS.items():
        lines.append(f"{name}:")
        for item in fields(section):
            value = getattr(section(), item.name)
            lines.append(f"  {item.name}: {_yaml(value)}".ljust(32) + f"# {item.metadata['note']}")
    return "\n".join(lines) + "\n"


def _yaml(value: Any) -> str:
    if value == "":
        return '""'
    return str(value).lower() if isinstance(value, bool) else str(value)
