"""Runs in the environment's interpreter and lets the program use Python objects one call at a time.

Arguments: the descriptors of requests and answers, the text of bridge.py, then the names
("module:attribute") to load at once; one with a "?" at its end may be missing and has number 0
then. Both directions carry one ASCII JSON text per line; the first answer is the hello. The end of
the requests ends this process, also in the middle of a call. What is needed only for calls is in
bridge.py, compiled with the first: the shortest commands make none.
"""

import os
import sys

PROTOCOL = 1
SLOW_LOAD = 1  # seconds after which loading is watched, for the case that the program goes away


class Host:
    """The two pipes, and the objects that the program holds, named by number."""

    def __init__(self, requests, answers, bridge_source):
        self.requests, self.answers, self.bridge_source = requests, answers, bridge_source
        self.objects, self.next_id, self.busy = {}, 1, True
        for descriptor in (requests, answers):
            os.set_inheritable(descriptor, False)

    def bridge(self):
        names = {}
        exec(self.bridge_source, names)
        return names

    def send(self, text):
        data = (text + "\n").encode("ascii")
        try:
            while data:
                data = data[os.write(self.answers, data) :]
        except BrokenPipeError:  # the program has gone: nobody waits for answers any more
            raise SystemExit from None

    def keep(self, value):
        self.objects[self.next_id] = value
        self.next_id += 1
        return self.next_id - 1

    def kept(self, value, name):
        return 0 if value is None and name[-1:] == "?" else self.keep(value)

    def load(self, module, name):
        if name[-1:] == "?":  # looked up without waking what a package does for missing names
            return getattr(sys.modules.get(module), "__dict__", {}).get(name[:-1])
        if not name:
            return __import__(module, fromlist=["__name__"])
        names = {}
        exec(f"from {module} import {name}", names)  # fails in the interpreter's own words
        return names.get(name)  # nothing for several names: they are there


def hello(host, names):
    """Written by hand: importing json would double the start of the shortest commands."""
    from _json import encode_basestring_ascii as quote

    try:
        loaded = [host.load(*name.split(":")) for name in names]
        version = str(next((v for v, n in zip(loaded, names) if n.endswith(":__version__")), ""))
        kept = ", ".join(str(host.kept(v, n)) for v, n in zip(loaded, names))
        rest = f'"version": {quote(version)}, "names": [{kept}]'
    except KeyboardInterrupt:
        rest = '"interrupted": true'
    except BaseException as error:
        text = f"{type(error).__name__}: {error}" if str(error) else type(error).__name__
        rest = f'"problem": {quote(text.encode("utf-8", "replace").decode())}'
    executable = os.fsencode(sys.executable or "").hex()
    for stream in (sys.stdout, sys.stderr):
        if stream:
            stream.flush()
    host.send(f'{{"protocol": {PROTOCOL}, "executable": {{"$bytes": "{executable}"}}, {rest}}}')


def main():
    import _signal

    host, names = Host(int(sys.argv[1]), int(sys.argv[2]), sys.argv[3]), sys.argv[4:]
    sys.argv[:] = ["zv-anpr"]
    if sys.path[:1] == [""]:  # modules of the folder the user happens to stand in are not ours
        del sys.path[0]

    def on_interrupt(number, frame):
        if host.busy:
            raise KeyboardInterrupt

    def on_slow_load(number, frame):
        host.bridge()["watch_load"](host)

    if _signal.getsignal(_signal.SIGINT) != _signal.SIG_IGN:  # whoever ignores it wants us to, too
        _signal.signal(_signal.SIGINT, on_interrupt)
    timer = hasattr(_signal, "setitimer")
    if timer:
        _signal.signal(_signal.SIGALRM, on_slow_load)
        _signal.setitimer(_signal.ITIMER_REAL, SLOW_LOAD)
    hello(host, names)
    host.busy = False
    if timer:
        _signal.setitimer(_signal.ITIMER_REAL, 0)
        _signal.signal(_signal.SIGALRM, _signal.SIG_DFL)
    first = os.read(host.requests, 65536)
    if first:
        host.bridge()["serve"](host, first)
    else:  # no call was wanted: the long way out takes as long as the way in
        import atexit

        atexit._run_exitfuncs()
        os._exit(0)


try:
    main()
except MemoryError:  # the program tells its user what has become of us
    os._exit(1)
