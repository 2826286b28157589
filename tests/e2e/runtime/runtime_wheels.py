"""Installable stand-ins of the three runtime distributions, each with the fault a test asks for.

Like the real ones they all install the module `onnxruntime` and overwrite each other's files.
"""

import base64
import hashlib
import zipfile
from pathlib import Path

PROVIDERS = {
    "onnxruntime": ["CPUExecutionProvider"],
    "onnxruntime-gpu": ["CUDAExecutionProvider", "CPUExecutionProvider"],
    "onnxruntime-directml": ["DmlExecutionProvider", "CPUExecutionProvider"],
}
EXTRAS = {"cuda": "nvidia-cuda-runtime-cu12", "cudnn": "nvidia-cudnn-cu12"}

# What stands at the head of the module: the ways in which a runtime can be broken.
WORKING = ""
NO_IMPORT = "raise ImportError('libonnx.so: ' + '\u00e9' * 300)"
NEEDS_CPU_PACKAGE = "from onnxruntime import _only_onnxruntime"
NOISY = "print('PROVIDERS: [1]'); print('W:onnxruntime: no GPU found'); print('CUDA: null')"
SLOW_TO_LEAVE = "import sys; sys.stdout.write('x' * 300_000); print()"


def withdrawn_when_imported(wheel: Path) -> str:
    """The module deletes its own wheel, so that a later installation finds none."""
    return f"import pathlib; pathlib.Path({str(wheel)!r}).unlink(missing_ok=True)"


def wheel_name(name: str, version: str) -> str:
    return f"{name.replace('-', '_')}-{version}-py3-none-any.whl"


def make_wheel(folder: Path, name: str, version: str, files: dict[str, str], *headers: str) -> Path:
    info = f"{name.replace('-', '_')}-{version}.dist-info"
    metadata = ["Metadata-Version: 2.1", f"Name: {name}", f"Version: {version}", *headers]
    content = {
        **files,
        f"{info}/METADATA": "\n".join(metadata) + "\n",
        f"{info}/WHEEL": "Wheel-Version: 1.0\nGenerator: tests\nRoot-Is-Purelib: true\n"
        "Tag: py3-none-any\n",
    }
    record = "".join(
        f"{path},{digest(text)},{len(text.encode())}\n" for path, text in content.items()
    )
    content[f"{info}/RECORD"] = record + f"{info}/RECORD,,\n"
    folder.mkdir(exist_ok=True)
    with zipfile.ZipFile(folder / wheel_name(name, version), "w") as wheel:
        for path, text in content.items():
            wheel.writestr(path, text)
    return folder / wheel_name(name, version)


def digest(text: str) -> str:
    value = hashlib.sha256(text.encode()).digest()
    return "sha256=" + base64.urlsafe_b64encode(value).rstrip(b"=").decode()


def runtime_wheel(
    folder: Path,
    name: str,
    version: str = "1.19.2",
    head: str = WORKING,
    providers: list[str] | None = None,
    needs: str | None = None,
) -> Path:
    """A stand-in; `needs` names a distribution without which it does not install."""
    listed = PROVIDERS[name] if providers is None else providers
    files = {
        "onnxruntime/__init__.py": f"{head}\n"
        f"__version__ = {version!r}\n"
        "from onnxruntime._flavour import get_available_providers, InferenceSession\n",
        "onnxruntime/_flavour.py": "def get_available_providers():\n"
        f"    return {listed!r}\n"
        "class InferenceSession:\n"
        "    def run(self):\n"
        f"        return {name!r}\n",
        f"onnxruntime/_only_{name.replace('-', '_')}.py": "",
    }
    headers = [f"Requires-Dist: {needs}"] if needs else []
    if name == "onnxruntime-gpu":
        for extra, package in EXTRAS.items():
            make_wheel(folder, package, "12.0", {f"{package.replace('-', '_')}.py": ""})
            headers += [f"Provides-Extra: {extra}", f'Requires-Dist: {package}; extra == "{extra}"']
    return make_wheel(folder, name, version, files, *headers)
