"""Which model files there are: repository, revision, names, sizes and digests.

Pinned, so that a mirror can delay the files but not change them.
"""

import json
import os
from dataclasses import dataclass
from typing import Any

from ..errors import MmcError
from ..places import MODEL_MANIFEST_ENV


@dataclass(frozen=True)
class ModelFile:
    """One file of the repository; `size` in bytes, `sha256` in hex."""

    file: str
    size: int
    sha256: str


@dataclass(frozen=True)
class ModelSet:
    """The two files that together see and speak."""

    repo: str
    revision: str
    llm: ModelFile
    mmproj: ModelFile

    @property
    def files(self) -> tuple[ModelFile, ModelFile]:
        return self.llm, self.mmproj


QWEN3_VL_2B = ModelSet(
    repo="Qwen/Qwen3-VL-2B-Instruct-GGUF",
    revision="52d6c8ffea26cc873ac5ad116f8631268d7eb503",
    llm=ModelFile(
        "Qwen3VL-2B-Instruct-Q4_K_M.gguf",
        1_107_409_952,
        "089d75c52f4b7ffc56ba998ffc50aae89fcafc755f9e7208aacca281dca6c2ae",
    ),
    mmproj=ModelFile(
        "mmproj-Qwen3VL-2B-Instruct-Q8_0.gguf",
        445_053_216,
        "f9a68fabba69c3b81e153367b2c7521030b0fa8bb0de400c9599c8e6725f9c82",
    ),
)


def model_set() -> ModelSet:
    """The pinned model, or the one that the manifest named by the environment describes."""
    manifest = os.environ.get(MODEL_MANIFEST_ENV)
    return _from_manifest(manifest) if manifest else QWEN3_VL_2B


def _from_manifest(path: str) -> ModelSet:
    try:
        with open(path, encoding="utf-8") as stream:
            fields = json.load(stream)
        return ModelSet(
            repo=str(fields["repo"]),
            revision=str(fields.get("revision", "main")),
            llm=_file(fields["llm"]),
            mmproj=_file(fields["mmproj"]),
        )
    except OSError as error:
        raise MmcError(f"{MODEL_MANIFEST_ENV}: cannot read {path}: {error.strerror}") from None
    except (KeyError, TypeError, ValueError) as error:
        text = f"{MODEL_MANIFEST_ENV}: {path} is not a model manifest ({error!r})"
        raise MmcError(text) from None


def _file(fields: dict[str, Any]) -> ModelFile:
    name = str(fields["file"])
    if os.path.basename(name) != name or name in ("", ".", ".."):
        raise ValueError(f"{name!r} is not a plain file name")
    return ModelFile(name, int(fields["size"]), str(fields["sha256"]).lower())
