"""ONNX Runtime with its telemetry off; every module takes it from here, none imports it itself.

Builds of it send usage data to their maker and keep an identity of the machine under `~/.cache`.
The variable counts only before the import, the call for builds that do not know the variable.
"""

import os

os.environ["ORT_DISABLE_TELEMETRY"] = "1"

import onnxruntime

onnxruntime.disable_telemetry_events()

__all__ = ["onnxruntime"]
