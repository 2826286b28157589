"""What mmc-setup prints."""

HEAD = f"\nZelvoran ANPR — Local MMC Setup (on-device VLM)\n{'=' * 50}\n"
THERE = "\n📦 huggingface_hub already installed.\n"
DOWNLOADING = (
    "\n⬇️  Downloading Qwen3-VL-2B GGUF model (~1.5 GB, cached in ~/.zelvoran/models/vlm)...\n"
)
MODELS = "   ✓ LLM    : /models/llm.gguf\n   ✓ mmproj : /models/mmproj.gguf\n"
SERVER = "\n🔎 Setting up llama.cpp `llama-server` binary...\n"
READY = (
    "\n✅ Local MMC ready. Switch backend with:\n   zv-anpr mmc-backend local\n"
    "\n   To remove later: zv-anpr mmc-uninstall [--all]\n"
)
NOT_READY = (
    "\n⚠️  Model is ready but llama-server is not — install it (above), then:\n"
    "   zv-anpr mmc-backend local\n\n   To remove later: zv-anpr mmc-uninstall [--all]\n"
)
MANUAL = """
   Manual install:
     • prebuilt: https://github.com/ggml-org/llama.cpp/releases
     • or build: cmake -B build -DGGML_CUDA=ON && cmake --build build -j
     Then:  export ZELVORAN_LLAMA_SERVER=/path/to/llama-server
"""
BEFORE_SERVER = HEAD + THERE + DOWNLOADING + MODELS + SERVER
