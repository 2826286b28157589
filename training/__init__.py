"""Trains the package's own plate detector and plate reader; not part of the installed package."""

import os

# Before anything imports it: ONNX Runtime's builds send usage data to their maker otherwise.
os.environ["ORT_DISABLE_TELEMETRY"] = "1"
