"""Keeping llama-server running: what is said when it dies at an awkward moment."""

import sys

import pytest
from zelvoran_anpr.mmc import MmcError
from zelvoran_anpr.mmc.serve.llama_process import LlamaProcess
from zelvoran_anpr.mmc.serve.supervisor import Supervisor


class DyingProcess(LlamaProcess):
    """Ends in the moment after it said that it is well."""

    def healthy(self) -> bool:
        self._child.kill()
        self._child.wait()
        return True


def test_a_process_that_dies_once_it_is_healthy_is_told(tmp_path):
    words = "print('error: out of memory', flush=True); import time; time.sleep(60)"
    log = tmp_path / "llama-server.log"

    def spawn() -> LlamaProcess:
        process = DyingProcess([sys.executable, "-c", words], "key", log)
        while "memory" not in log.read_text():
            assert process.alive()
        return process

    supervisor = Supervisor(spawn, lambda: False, 20.0)
    with pytest.raises(MmcError) as told:
        supervisor.start()
    assert str(told.value) == "llama-server ended (error: out of memory)"
    assert supervisor.port() is None
