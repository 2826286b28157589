"""The program of a reading process: photos come in on standard input, plates go out.

Frames: first the options, answered by {"ready": true} or {"failed": text}. Then photos with
{"region", "crops"}, each answered by a `Reader`'s answer or {"refused": text, "status": number}.
In between {"needs": bytes} may be asked, which is answered by {"granted": true} when so much memory
may be used, and by {"granted": false} when the photo is to be let go.
"""

import os
import sys
import traceback
from typing import Any, BinaryIO

from ...reading.kept_memory import keep_freed_memory
from .errors import PhotoRefused
from .frames import read_frame, write_frame
from .own_limits import end_with_server, ignore_signals, limit_memory

_LEEWAY = 1.5
"""What a photo asks for is an estimate; the limit is for those that take far more."""


def main() -> int:
    ignore_signals()
    keep_freed_memory()
    requests, answers = sys.stdin.buffer, _own_answers()
    first = read_frame(requests)
    if first is None:
        return 1
    options = first[0]
    end_with_server(options["server"])
    reader = _reader(options, requests, answers)
    if reader is None:
        return 1
    if options["backend"] == "cpu":  # drivers of accelerators map more than they use
        limit_memory(int(_LEEWAY * options["most_bytes"]))
    write_frame(answers, {"ready": True})
    while (frame := read_frame(requests)) is not None:
        write_frame(answers, *_answer(reader, *frame))
    return 0


def _own_answers() -> BinaryIO:
    """Return the pipe to the server; what libraries print goes to the log instead."""
    answers = os.fdopen(os.dup(1), "wb")
    os.dup2(2, 1)
    return answers


def _reader(options: dict[str, Any], requests: BinaryIO, answers: BinaryIO) -> Any:
    def ask_memory(needed: int) -> None:
        write_frame(answers, {"needs": needed})
        answer = read_frame(requests)
        if answer is None:
            os._exit(1)
        if not answer[0]["granted"]:
            raise PhotoRefused("nobody waits for it any more")

    try:
        from .reader import Reader

        return Reader(options, ask_memory)
    except Exception as error:  # noqa: BLE001  whatever it is, the server tells it
        text = str(error) if isinstance(error, ValueError) else f"{type(error).__name__}: {error}"
        write_frame(answers, {"failed": text})
        return None


def _answer(reader: Any, request: dict[str, Any], photo: bytes) -> tuple[dict[str, Any], bytes]:
    try:
        return reader.read(photo, request["region"], request["crops"])
    except PhotoRefused as refused:
        return {"refused": str(refused), "status": refused.status}, b""
    except MemoryError:
        return {"refused": "Not enough memory to read the photo", "status": 413}, b""
    except Exception as error:  # noqa: BLE001  the process goes on; the log gets it all
        traceback.print_exc()
        return {"failed": f"{type(error).__name__}: {error}"}, b""


if __name__ == "__main__":
    sys.exit(main())
