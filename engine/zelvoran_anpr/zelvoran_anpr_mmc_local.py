"""Set-up and removal of on-device make/model/colour, as the command line calls it.

Light to import: the work is in `zelvoran_anpr.mmc.install` and loads when it is called.
"""

from pathlib import Path

from .mmc.places import BIN_DIR, MODEL_DIR

_BIN_DIR: Path = BIN_DIR
_MODEL_DIR: Path = MODEL_DIR


def ensure_models(hf_endpoint: str | None = None, allow_download: bool = True) -> dict[str, str]:
    """Paths of the two model files, downloading what is missing from the hub or `hf_endpoint`.

    Returns {"llm": path, "mmproj": path}. Raises MmcError; a later call continues the download.
    """
    from .mmc.install.model_setup import set_up_models

    return set_up_models(_MODEL_DIR, hf_endpoint, allow_download)


def find_server_bin(path: str | None = None) -> str:
    """`path`, else $ZELVORAN_LLAMA_SERVER, else our own, else PATH's; else "llama-server"."""
    from .mmc.install.llama_binary import find_binary

    return find_binary(_BIN_DIR, path)


def _server_bin_runs(path: str) -> bool:
    """Whether the executable is there and answers `--version`."""
    from .mmc.install.llama_binary import run_problem

    return run_problem(str(path)) is None


def download_server_bin(variant: str = "auto", tag: str | None = None) -> dict[str, str]:
    """A llama-server that runs, installed from the llama.cpp release page where needed.

    Returns {"variant", "path"} and perhaps "note". Raises MmcError; the installed one stays.
    """
    from .mmc.install.llama_setup import set_up_binary

    return set_up_binary(_BIN_DIR, variant, tag)


def _dir_size(path: Path | str) -> int:
    """Bytes of the regular files under `path`; links are not followed."""
    from .mmc.install.removal import dir_size

    return dir_size(Path(path))


def remove_server_bin() -> dict[str, object]:
    """Remove our llama-server; {"removed": bool, "freed_bytes": int}. Raises MmcError."""
    return _remove(_BIN_DIR)


def remove_models() -> dict[str, object]:
    """Remove the model files; {"removed": bool, "freed_bytes": int}. Raises MmcError."""
    return _remove(_MODEL_DIR)


def _remove(folder: Path) -> dict[str, object]:
    from .mmc.fetch.disk import disk_errors
    from .mmc.install.exclusive import exclusive
    from .mmc.install.removal import remove_folder

    busy = f"a set-up is writing to {folder}; stop it or wait for it, then run this again"
    with disk_errors(f"removing {folder}"):
        if not folder.parent.is_dir():
            return {"removed": False, "freed_bytes": 0}
        with exclusive(folder, busy, wait=False):
            return remove_folder(folder)
