"""One call to the remote recognition service, and its refusals in words.

POST of `image/jpeg` with `Authorization: Bearer <key>`; the answer is JSON: make, model, color.
"""

import http.client
import json
import urllib.error
import urllib.request
from typing import Any

from ..errors import MmcError
from ..fetch.http import host_of, reason_of, tls_context
from .settings import CloudSettings

_MOST_BYTES = 1 << 20


class NotSent(MmcError):
    """The call never reached the service, so it costs nothing."""


class _NoRedirect(urllib.request.HTTPRedirectHandler):
    """A redirect would carry the key and the picture to an address nobody configured."""

    def redirect_request(self, *_args: Any, **_more: Any) -> None:
        return None


class CloudClient:
    """Speaks with the service at `mmc.cloud.url`; thread-safe."""

    def __init__(self, settings: CloudSettings) -> None:
        self._settings = settings
        self._opener = urllib.request.build_opener(
            _NoRedirect, urllib.request.HTTPSHandler(context=tls_context())
        )

    def require_configured(self) -> None:
        if not self._settings.url:
            raise MmcError(
                "cloud MMC is not configured: set mmc.cloud.url and api_key in server_config.yaml,"
                " or run: zv-anpr mmc-backend local"
            )
        if not self._settings.url.lower().startswith(("https://", "http://")):
            raise MmcError("server_config.yaml: mmc.cloud.url must start with https:// or http://")

    def require_reachable(self) -> None:
        # Any HTTP answer proves the way to the service; only a refused key matters beyond that.
        request = urllib.request.Request(self._settings.url, headers=self._headers(), method="HEAD")
        try:
            self._opener.open(request, timeout=self._settings.timeout).close()
        except urllib.error.HTTPError as error:
            error.close()
            if error.code in (401, 403):
                raise self._refused() from None
        except (OSError, http.client.HTTPException, ValueError) as error:
            raise self._unreachable(error) from None

    def ask(self, jpeg: bytes) -> Any:
        """The decoded answer; raises NotSent or MmcError."""
        headers = {**self._headers(), "Content-Type": "image/jpeg"}
        try:
            request = urllib.request.Request(self._settings.url, data=jpeg, headers=headers)
            with self._opener.open(request, timeout=self._settings.timeout) as answer:
                return json.loads(answer.read(_MOST_BYTES))
        except urllib.error.HTTPError as error:
            error.close()
            raise self._status_error(error) from None
        except (OSError, http.client.HTTPException) as error:
            never_left = isinstance(getattr(error, "reason", None), OSError)
            text = str(self._unreachable(error))
            raise (NotSent if never_left else MmcError)(text) from None
        except ValueError:
            raise MmcError(f"{self._host()} sent no JSON; check mmc.cloud.url") from None

    def _headers(self) -> dict[str, str]:
        key = self._settings.api_key
        accept = {"Accept": "application/json", "User-Agent": "zelvoran-anpr"}
        return {**accept, "Authorization": f"Bearer {key}"} if key else accept

    def _host(self) -> str:
        return f"the MMC service {host_of(self._settings.url)}"

    def _refused(self) -> MmcError:
        return MmcError(f"{self._host()} refused the key; check mmc.cloud.api_key")

    def _unreachable(self, error: BaseException) -> MmcError:
        return MmcError(f"cannot reach {self._host()}: {reason_of(error)}")

    def _status_error(self, error: urllib.error.HTTPError) -> MmcError:
        if error.code in (401, 403):
            return self._refused()
        if error.code == 429:
            wait = error.headers.get("Retry-After")
            return MmcError(
                f"{self._host()} takes no more calls now"
                + (f"; try again in {wait} s" if wait and wait.isdigit() else "")
            )
        return MmcError(f"{self._host()} answered {error.code} {error.reason}")
