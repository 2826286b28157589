"""Downloading the model files from the model hub or a mirror of it, resuming and verifying."""

from pathlib import Path

from ..errors import MmcError
from ..fetch.disk import disk_errors
from ..fetch.download import Remote, fetch
from ..fetch.http import reason_of
from .exclusive import exclusive
from .model_files import ModelFile, ModelSet, model_set
from .model_store import ModelStore, installed_models


def set_up_models(folder: Path, endpoint: str | None, allow_download: bool) -> dict[str, str]:
    """Paths `llm` and `mmproj`; asks the network only for what is missing or damaged.

    Raises MmcError; what was downloaded by then stays and is continued by the next call.
    """
    store, files = ModelStore(folder), model_set()
    if not allow_download or not _missing(store, files):
        return installed_models(store, files)
    alone = exclusive(folder, "another model set-up is running")
    with disk_errors(f"storing the model in {folder}"), alone:
        folder.mkdir(exist_ok=True)
        for file in _missing(store, files):
            fetch(_remote(files, file, endpoint), store.part(file))
            store.adopt(file)
        store.drop_parts()
    return installed_models(store, files)


def _missing(store: ModelStore, files: ModelSet) -> list[ModelFile]:
    return [file for file in files.files if store.problem(file)]


def _remote(files: ModelSet, file: ModelFile, endpoint: str | None) -> Remote:
    """Ask the hub where `file` is and whether it is the file that we mean."""
    try:
        from huggingface_hub import get_hf_file_metadata, hf_hub_url
    except ImportError:
        raise MmcError("huggingface_hub is missing; run: pip install huggingface_hub") from None
    place = (endpoint or "").strip().rstrip("/") or None
    if place and not place.lower().startswith(("https://", "http://")):
        raise MmcError(f"the model hub's address must start with https://, not {place!r}")
    url = hf_hub_url(files.repo, file.file, revision=files.revision, endpoint=place)
    try:
        # No token: the repository is public, and a mirror has no business with the user's key.
        found = get_hf_file_metadata(url, token=False)
    except Exception as error:  # noqa: BLE001  the client library raises many types
        raise MmcError(_hub_failure(url, error)) from None
    if found.size not in (None, file.size):
        raise MmcError(f"{url} has {found.size} bytes, expected {file.size}; try another mirror")
    return Remote(url, file.file, file.size, file.sha256)


def _hub_failure(url: str, error: Exception) -> str:
    status = getattr(getattr(error, "response", None), "status_code", None)
    if type(error).__name__ == "OfflineModeIsEnabled":
        return "the model hub is switched off by HF_HUB_OFFLINE; unset it to download"
    if status is not None:
        return f"the model hub answered {status} for {url}"
    return f"cannot reach the model hub at {url}: {reason_of(error)}"
