"""Where the on-device recogniser lives, and the environment variables that point elsewhere."""

import os
from pathlib import Path

HOME_DIR = Path.home() / ".zelvoran"
BIN_DIR = HOME_DIR / "llama-server"
MODEL_DIR = HOME_DIR / "models" / "vlm"

SERVER_BIN_ENV = "ZELVORAN_LLAMA_SERVER"
RELEASES_ENV = "ZELVORAN_LLAMA_RELEASES"
MODEL_MANIFEST_ENV = "ZELVORAN_MMC_MODEL_MANIFEST"
CLOUD_KEY_ENV = "ZELVORAN_MMC_API_KEY"

BARE_NAME = "llama-server"
EXECUTABLE = "llama-server.exe" if os.name == "nt" else "llama-server"
