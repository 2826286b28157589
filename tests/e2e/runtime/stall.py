"""Holds a child process still at a chosen point of its work; installed as `sitecustomize`.

ZV_TEST_STALL is JSON: {"words": in its command line, "event": an audit event, "path": part of one
of the event's paths, "reached": the file to create}. Without an event it stops at its start.
"""

import json
import os
import sys
import time

stall = json.loads(os.environ.get("ZV_TEST_STALL", "null"))


def stop_here():
    stall["event"] = None
    open(stall["reached"], "w").close()
    time.sleep(600)


def watch(event, arguments):
    if event != stall["event"]:
        return
    writes = event != "open" or "w" in str(arguments[1]) or bool(arguments[2] & os.O_WRONLY)
    paths = [str(argument) for argument in arguments[:2]]
    if writes and any(stall["path"] in path for path in paths):
        stop_here()


if stall and stall["words"] in " ".join(sys.orig_argv):
    if stall["event"]:
        sys.addaudithook(watch)
    else:
        stop_here()
