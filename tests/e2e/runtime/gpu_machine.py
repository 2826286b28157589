"""A machine whose Python modules are what a test needs, and what gpu-info prints of some."""

import subprocess
from pathlib import Path

HEAD = """Zelvoran ANPR System Information
==================================================

📦 Package Version: 3.2.1

📊 Image Backend:
----------------------------------------
"""
WITHOUT_ANYTHING = (
    HEAD
    + """Pillow: installed

🚀 Model Backend Support (V14–V16):
----------------------------------------
❌ CPU (ONNX Runtime not installed)
❌ CUDA (Cannot check)
⚠️  DirectML (Windows only)
❌ TensorRT (Cannot check)

📋 Summary:
----------------------------------------
Available models: V17
⚠️  No backends available - install onnxruntime

💡 Tips:
• Install onnxruntime: pip install onnxruntime
"""
)
CPU = "CPUExecutionProvider"
CUDA = "CUDAExecutionProvider"
DIRECTML = "DmlExecutionProvider"
TENSORRT = "TensorrtExecutionProvider"
TORCH = """
class cuda:
    is_available = staticmethod(lambda: {available})
class version:
    cuda = "12.6"
"""
CUDA_CONFLICT = (
    "\n💡 Tips:\n"
    "⚠️  Both onnxruntime (CPU) and onnxruntime-gpu are installed — GPU provider may be hidden\n"
    "   Fix: zv-anpr gpu-setup cuda\n"
)
BREAKS = {
    "raises": "raise RuntimeError('broken')",
    "exits": "import sys; sys.exit(3)",
    "ends the process": "import os; os._exit(0)",
    "crashes": "import os; os.abort()",
    "interrupts": "raise KeyboardInterrupt",
    "is no Python": "def (",
    "prints and raises": "print('{' * 100_000, flush=True); raise ValueError",
}


class Environment:
    """Modules that shadow the interpreter's own, in front of its search path."""

    def __init__(self, zv) -> None:
        self.zv = zv
        self.folder: Path = zv.engine_folder
        for name in ("PIL", "onnxruntime", "torch", "tensorrt"):
            self.module(name, "raise ModuleNotFoundError('not here')")

    def module(self, name: str, text: str) -> None:
        (self.folder / f"{name}.py").write_text(text, encoding="utf-8")

    def runtime(self, *providers: str, version: str | None = "1.19.2", before: str = "") -> None:
        line = f"__version__ = {version!r}" if version is not None else ""
        listing = f"def get_available_providers():\n    return {list(providers)!r}\n"
        self.module("onnxruntime", f"{before}\n{line}\n{listing}")

    def distribution(self, name: str, version: str, folder: str | None = None) -> None:
        folder = folder or f"{name.replace('-', '_')}-{version}"
        path = self.folder / f"{folder}.dist-info"
        path.mkdir()
        (path / "METADATA").write_text(f"Metadata-Version: 2.1\nName: {name}\nVersion: {version}\n")

    def cuda_library(self, version: int) -> Path:
        source = self.folder / "cudart.c"
        source.write_text(f"int cudaRuntimeGetVersion(int* v) {{ *v = {version}; return 0; }}")
        subprocess.run(
            ["cc", "-shared", "-fPIC", "-o", self.folder / "libcudart.so", source], check=True
        )
        return self.folder

    def report(self, **env: str) -> str:
        status, out, err = self.zv("gpu-info", env=env)
        assert (status, err) == (0, "")
        return out

    def line(self, about: str, **env: str) -> str:
        return next(line for line in self.report(**env).splitlines() if about in line)
