"""The on-device backend: a supervised llama-server that is shown one vehicle at a time."""

import http.client
import json
import secrets
from pathlib import Path
from typing import Any

import numpy as np

from ..errors import MmcError
from ..fetch.http import reason_of
from ..install.llama_binary import find_binary
from ..install.model_files import model_set
from ..install.model_store import ModelStore, installed_models
from ..places import BARE_NAME, BIN_DIR, MODEL_DIR
from .crop import jpeg_of
from .gate import Gate
from .llama_process import LlamaProcess
from .settings import LocalSettings
from .supervisor import Supervisor
from .usage import DailyCounter
from .vehicle import chat_request, from_chat

# Some 500 picture tokens: enough for a badge, and a second or two on a CPU.
_LONGEST_SIDE = 768


class LocalBackend:
    """No quota; calls are counted all the same."""

    name = "local"

    def __init__(self, settings: LocalSettings, data_dir: Path | None) -> None:
        self._settings = settings
        self._log = data_dir / "logs" / "llama-server.log" if data_dir else None
        self._counter = DailyCounter(self.name, data_dir)
        self._gate = Gate()
        self._key = secrets.token_urlsafe(24)
        self._supervisor = Supervisor(self._spawn, self._gate.busy, settings.start_timeout)

    def start(self) -> None:
        self._supervisor.start()
        self._gate.open()

    def stop(self) -> None:
        self._gate.shut(self._settings.request_timeout + 5)
        self._supervisor.stop()

    def available(self) -> bool:
        return self._supervisor.port() is not None

    def status(self) -> dict[str, Any]:
        state = {"available": self.available(), "backend": self.name, **self._counter.status()}
        error = self._supervisor.error
        return {**state, "error": error} if error else state

    def recognise(self, vehicle_rgb: np.ndarray) -> dict[str, str]:
        with self._gate.passing():
            body = json.dumps(chat_request(jpeg_of(vehicle_rgb, _LONGEST_SIDE))).encode("ascii")
            port = self._supervisor.port()
            if port is None:
                raise MmcError(self._supervisor.error or "llama-server is restarting")
            self._counter.take()
            return from_chat(self._ask(port, body))

    def _spawn(self) -> LlamaProcess:
        # Looked up at each start: a set-up may have replaced the binary or the model meanwhile.
        return LlamaProcess(self._command(), self._key, self._log)

    def _command(self) -> list[str]:
        settings, models = self._settings, self._models()
        binary = find_binary(BIN_DIR, settings.server_bin, "mmc.local.server_bin")
        if binary == BARE_NAME:
            raise MmcError("llama-server is not installed. Run: zv-anpr mmc-setup")
        command = [binary, "--model", models["llm"], "--mmproj", models["mmproj"], "--no-webui"]
        command += ["--ctx-size", str(settings.context * settings.parallel)]
        command += ["--parallel", str(settings.parallel)]
        if settings.threads is not None:
            command += ["--threads", str(settings.threads)]
        if settings.gpu_layers is not None:
            command += ["--gpu-layers", str(settings.gpu_layers)]
        return command

    def _models(self) -> dict[str, str]:
        settings = self._settings
        if bool(settings.llm) != bool(settings.mmproj):
            raise MmcError("server_config.yaml: mmc.local.llm and mmproj go together; set both")
        if settings.llm and settings.mmproj:
            return {"llm": settings.llm, "mmproj": settings.mmproj}
        return installed_models(ModelStore(MODEL_DIR), model_set())

    def _ask(self, port: int, body: bytes) -> Any:
        headers = {"Content-Type": "application/json", "Authorization": f"Bearer {self._key}"}
        timeout = self._settings.request_timeout
        connection = http.client.HTTPConnection("127.0.0.1", port, timeout=timeout)
        try:
            connection.request("POST", "/v1/chat/completions", body, headers)
            answer = connection.getresponse()
            content = answer.read()
        except (OSError, http.client.HTTPException) as error:
            raise MmcError(f"llama-server broke off: {reason_of(error)}") from None
        finally:
            connection.close()
        if answer.status != 200:
            raise MmcError(f"llama-server answered {answer.status}: {_message(content)}")
        try:
            return json.loads(content)
        except ValueError:
            raise MmcError("llama-server sent no JSON") from None


def _message(content: bytes) -> str:
    try:
        return str(json.loads(content)["error"]["message"])[:200]
    except (ValueError, KeyError, TypeError):
        return content[:200].decode("utf-8", "replace").strip()
