"""Release archives as llama.cpp lays them out, around the double; and unsafe ones."""

import io
import sys
import tarfile
import zipfile
from pathlib import Path

# What releases call their files for Linux; the tag goes in.
CPU = "llama-{}-bin-ubuntu-x64.tar.gz"
VULKAN = "llama-{}-bin-ubuntu-vulkan-x64.tar.gz"
CUDA = "llama-{}-bin-ubuntu-cuda-12.8-x64.tar.gz"
CUDART = "cudart-llama-{}-bin-ubuntu-cuda-12.8-x64.tar.gz"

_DOUBLE = (Path(__file__).parent / "llama_server_double.py").read_text()


def executable(mark: str = "", status: int = 0) -> bytes:
    """A llama-server that answers --version with `status`; `mark` makes builds differ."""
    body = f"raise SystemExit({status})\n" if status else _DOUBLE
    return f"#!{sys.executable}\n# {mark}\n{body}".encode()


def tar_member(name: str, content: bytes = b"", kind: bytes = tarfile.REGTYPE, **more):
    info = tarfile.TarInfo(name)
    info.type, info.size, info.mode = kind, len(content), more.pop("mode", 0o644)
    for key, value in more.items():
        setattr(info, key, value)
    return info, content


def tar_of(*members) -> bytes:
    out = io.BytesIO()
    with tarfile.open(fileobj=out, mode="w:gz", compresslevel=1) as tar:
        for info, content in members:
            tar.addfile(info, io.BytesIO(content))
    return out.getvalue()


def linux_build(tag: str, mark: str = "", status: int = 0, padding: bytes = b"") -> bytes:
    """One folder with the executable, a library, and the library's links inside the folder."""
    top = f"llama-{tag}"
    return tar_of(
        tar_member(f"{top}/", kind=tarfile.DIRTYPE, mode=0o755),
        tar_member(f"{top}/llama-server", executable(mark or tag, status), mode=0o755),
        tar_member(f"{top}/libllama.so.0.5.0", b"\x7fELF" + padding, mode=0o755),
        tar_member(f"{top}/libllama.so.0", kind=tarfile.SYMTYPE, linkname="libllama.so.0.5.0"),
        tar_member(f"{top}/libllama.so", kind=tarfile.SYMTYPE, linkname="libllama.so.0"),
        tar_member(f"{top}/LICENSE", b"MIT"),
    )


def linux_cuda_runtime(tag: str) -> bytes:
    return tar_of(tar_member(f"cudart-llama-{tag}/libcudart.so.12", b"runtime", mode=0o755))


def windows_build(tag: str) -> bytes:
    out = io.BytesIO()
    with zipfile.ZipFile(out, "w", zipfile.ZIP_DEFLATED) as archive:
        archive.writestr("llama-server.exe", executable(tag))
        archive.writestr("ggml.dll", b"MZ")
    return out.getvalue()


def version_of(path: str) -> str:
    """The mark of an executable made here."""
    return Path(path).read_text().splitlines()[1]


def leftovers(local) -> list[str]:
    """What lies in the folder of our llama-server."""
    return sorted(p.name for p in local._BIN_DIR.iterdir())
