"""Performs the requests of the program in the engine host; see host.py.

A request imports a name, calls an object or asks for an object's value. {"$ref": n} in it stands
for the object number n. What JSON cannot carry comes back as {"$...": ...}. A result that is kept
here comes back as its number and a copy, so that reading it takes no further request.
"""

import _thread
import json
import os
import sys
from _queue import SimpleQueue

GRACE = 5  # seconds that a call gets to end itself when the program has gone
OWN_KINDS = {type(None), bool, int, float, str}
DEEPEST, LARGEST = 8, 100_000  # levels and values of a copy
STAYS_HERE = {"$there": 0}


def serve(host, first):
    queue = SimpleQueue()
    try:
        _thread.start_new_thread(receive, (host, queue, first))
        lines = iter(queue.get, None)
    except RuntimeError:  # no room for a thread; a call then goes on when the program has gone
        lines = requests(host, first)
    for line in lines:
        host.send(answer(host, line))


def receive(host, queue, first):
    """Its own thread: hands lines on, and ends the process when the program has gone."""
    for line in requests(host, first):
        queue.put(line)
    queue.put(None)
    if host.busy:
        end_now()


def requests(host, data):
    while True:
        *complete, data = data.split(b"\n")
        yield from complete
        try:
            chunk = os.read(host.requests, 65536)
        except OSError:
            chunk = b""
        if not chunk:
            return
        data += chunk


def watch_load(host):
    """Ends a load that takes long when the program has gone."""
    import select

    def watch():
        poll = select.poll()
        poll.register(host.answers, 0)  # tells only that its other end is closed
        while host.busy:
            if poll.poll(500) and host.busy:
                end_now()

    _thread.start_new_thread(watch, ())


def end_now():
    import signal
    import time

    os.kill(os.getpid(), signal.SIGTERM)
    time.sleep(GRACE)
    os._exit(1)


def answer(host, line):
    try:
        host.busy = True
        reply = {"ok": perform(host, json.loads(line, object_pairs_hook=decoder(host)))}
    except KeyboardInterrupt:
        reply = {"interrupted": True}
    except SystemExit as request_to_end:
        code = request_to_end.code
        number = isinstance(code, int)
        if not number and code is not None:
            print(code, file=sys.stderr)
        reply = {"exit": int(code) if number else int(code is not None)}
    except BaseException as error:
        reply = {"error": failure(error)}
    host.busy = False
    flush()
    return json.dumps(reply)


def decoder(host):
    def decode(pairs):
        if len(pairs) == 1 and pairs[0][0] == "$ref":
            return host.objects[pairs[0][1]]
        return dict(pairs)

    return decode


def perform(host, request):
    for number in request.get("drop", ()):
        host.objects.pop(number, None)
    if "import" in request:
        result = host.load(*request["import"])
    elif "value" in request:
        result = request["value"]
    else:
        result = request["call"](*request["args"], **request["keywords"])
    return [host.keep(result), copied(result, [LARGEST])] if request["keep"] else encode(result)


def copied(value, room, level=0):
    """The value where it is of Python's own kinds, which tell no difference between once and twice.

    Everything else stays here, to be asked about in its own words. `room` is what is left of
    LARGEST.
    """
    kind = type(value)
    if kind in OWN_KINDS:
        return encode(value)
    if kind in (list, tuple, dict) and level < DEEPEST and len(value) <= room[0]:
        room[0] -= len(value)
        if kind is not dict:
            return [copied(item, room, level + 1) for item in value]
        if all(type(key) is str for key in value):
            items = value.items()
            return {"$map": [[encode_text(k), copied(v, room, level + 1)] for k, v in items]}
    return STAYS_HERE


def encode(value):
    if value is None or value is True or value is False:
        return value
    if isinstance(value, str):
        return encode_text(str.__str__(value))
    if isinstance(value, int):
        return int(value) if -(2**63) <= value < 2**63 else {"$int": str(int(value))}
    if isinstance(value, float):
        return float(value) if value - value == 0 else {"$real": str(float(value))}
    if isinstance(value, (list, tuple)):
        return [encode(item) for item in value]
    if isinstance(value, dict):
        return {"$map": [[encode(str(k)), encode(v)] for k, v in value.items()]}
    if hasattr(value, "tolist"):  # NumPy scalars and arrays
        return encode(value.tolist())
    if isinstance(value, os.PathLike):
        return encode(os.fspath(value))
    texts = type(value).__name__, str(value), repr(value)
    return {"$opaque": [encode_text(text) for text in texts]}


def encode_text(text):
    try:
        text.encode("utf-8")
        return text
    except UnicodeEncodeError:  # a file name that is no UTF-8, or half a surrogate pair
        return {"$bytes": b"".join(map(encode_character, text)).hex()}


def encode_character(character):
    stands_for_a_byte = "\udc80" <= character <= "\udcff"
    return character.encode("utf-8", "surrogateescape" if stands_for_a_byte else "surrogatepass")


def failure(error):
    try:
        text = str(error)
    except Exception:
        text = type(error).__name__
    return {
        "type": type(error).__name__,
        "text": encode_text(text),
        "import": isinstance(error, ImportError),
    }


def flush():
    """Python's streams and those of native libraries, so that all text keeps its order."""
    for stream in (sys.stdout, sys.stderr):
        try:
            stream.flush()
        except Exception:
            pass
    try:
        if "ctypes" in sys.modules:
            sys.modules["ctypes"].CDLL(None).fflush(None)
    except Exception:
        pass
