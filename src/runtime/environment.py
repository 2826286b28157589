"""What the engine host tells of its environment, looked at anew at every call."""

import os
import shutil
import sysconfig
from importlib import metadata
from pathlib import Path


def installed():
    """{"found": [[name in lower case, version], ...] in search order, "complete": all readable}."""
    found, complete = [], True
    for distribution in metadata.distributions():
        try:
            if set_aside(distribution):
                continue
            name = distribution.metadata.get("Name")
            if name:
                found.append([name.lower(), str(distribution.metadata.get("Version") or "")])
        except Exception:
            complete = False
    return {"found": found, "complete": complete}


def set_aside(distribution):
    """Whether an interrupted removal left it behind: the installer first renames to "~..."."""
    path = getattr(distribution, "_path", None)
    return path is not None and Path(path).name.startswith("~")


def sweep(note):
    """Delete what an installer left half done since the file `note` was written.

    The installer writes RECORD last, and refuses to touch a distribution without one.
    """
    since = os.stat(note).st_mtime
    for folder in {sysconfig.get_path("purelib"), sysconfig.get_path("platlib")}:
        for entry in Path(folder).glob("*"):
            half_done = entry.name.startswith("~") or (
                entry.name.endswith(".dist-info") and not (entry / "RECORD").exists()
            )
            if half_done and entry.lstat().st_ctime >= since:
                shutil.rmtree(entry, ignore_errors=True)
