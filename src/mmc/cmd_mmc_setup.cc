#include <exception>
#include <optional>
#include <string>

#include "mmc/commands.h"
#include "python/object.h"

namespace zv::mmc {
namespace {

constexpr const char* HUB_MIRROR = "https://hf-mirror.com";
constexpr const char* LLAMA_RELEASES = "https://github.com/ggml-org/llama.cpp/releases";
constexpr const char* BARE_NAME = "llama-server";  // the module's answer when it found none

struct Operations {
  python::Object ensure_models;
  python::Object find_server_bin;
  python::Object server_bin_runs;
  python::Object download_server_bin;
};

class Setup {
 public:
  Setup(const Args& args, Session& session) : args_(args), session_(session), out_(session.out) {}

  void run() {
    out_ << "\nZelvoran ANPR — Local MMC Setup (on-device VLM)\n" << std::string(50, '=') << "\n";
    if (!provide_hub_client()) return;
    const auto operations = load_operations();
    if (!operations || !provide_models(*operations)) return;
    out_ << "\n🔎 Setting up llama.cpp `llama-server` binary...\n";
    const bool ready =
        args_.flag("skip_llama") ? find_server(*operations) : get_server(*operations);
    out_ << (ready ? "\n✅ Local MMC ready. Switch backend with:\n"
                   : "\n⚠️  Model is ready but llama-server is not — install it (above), "
                     "then:\n")
         << "   zv-anpr mmc-backend local\n"
         << "\n   To remove later: zv-anpr mmc-uninstall [--all]\n";
  }

 private:
  bool provide_hub_client() {
    try {
      session_.engine.load("huggingface_hub", "");
      out_ << "\n📦 huggingface_hub already installed.\n";
      return true;
    } catch (const std::exception&) {
      return install_hub_client();
    }
  }

  bool install_hub_client() {
    out_ << "\n🔧 Installing huggingface_hub (for model download)...\n";
    if (_pip_run({"install", "huggingface_hub"}, session_)) {
      // The engine's interpreter has looked before, and remembers what it did not find.
      session_.engine.load("importlib", "invalidate_caches").call();
      return true;
    }
    out_ << "\n✗ Failed to install huggingface_hub.\n"
            "   Manual retry: pip install huggingface_hub\n";
    return false;
  }

  std::optional<Operations> load_operations() {
    try {
      Engine& engine = session_.engine;
      return Operations{engine.load(LOCAL_MODULE, "ensure_models"),
                        engine.load(LOCAL_MODULE, "find_server_bin"),
                        engine.load(LOCAL_MODULE, "_server_bin_runs"),
                        engine.load(LOCAL_MODULE, "download_server_bin")};
    } catch (const std::exception& error) {
      out_ << "\n✗ Local MMC module unavailable: " << error.what() << "\n";
      return std::nullopt;
    }
  }

  bool provide_models(const Operations& operations) {
    out_ << "\n⬇️  Downloading Qwen3-VL-2B GGUF model (~1.5 GB, cached in "
            "~/.zelvoran/models/vlm)...\n";
    try {
      const python::Object paths =
          operations.ensure_models.make({}, {{"hf_endpoint", args_.value("hf_endpoint")},
                                             {"allow_download", !args_.flag("no_download")}});
      const std::string llm = paths.item("llm").text();
      const std::string mmproj = paths.item("mmproj").text();
      out_ << "   ✓ LLM    : " << llm << "\n"
           << "   ✓ mmproj : " << mmproj << "\n";
      return true;
    } catch (const std::exception& error) {
      out_ << "\n✗ Model download failed: " << error.what() << "\n"
           << "   Retry later or set --hf-endpoint " << HUB_MIRROR << "\n";
      return false;
    }
  }

  // Reports only.
  bool find_server(const Operations& operations) {
    const python::Object path = operations.find_server_bin.make({args_.value("server_bin")});
    const std::string name = path.text();
    const bool ready = name != BARE_NAME && operations.server_bin_runs.make({path}).truthy();
    out_ << "   " << (ready ? "✓ Found: " + name : "✗ not installed (skipped by --skip-llama)")
         << "\n";
    return ready;
  }

  bool get_server(const Operations& operations) {
    try {
      const std::string variant = args_.text("llama_variant");
      const python::Object info = operations.download_server_bin.make(
          {}, {{"variant", variant.empty() ? "auto" : variant}, {"tag", args_.value("llama_tag")}});
      const std::string got = info.item("variant").text() + "): " + info.item("path").text();
      out_ << "   ✓ llama-server ready (" << got << "\n";
      print_note(info);
      return true;
    } catch (const std::exception& error) {
      out_ << "   ✗ auto-install failed: " << error.what() << "\n";
      print_manual_install();
      return false;
    }
  }

  void print_note(const python::Object& info) {
    if (!info.contains("note")) return;
    const python::Object note = info.item("note");
    if (!note.truthy()) return;
    const std::string text = note.text();
    out_ << "     note: " << text << "\n";
  }

  void print_manual_install() {
    out_ << "\n   Manual install:\n"
         << "     • prebuilt: " << LLAMA_RELEASES << "\n"
         << "     • or build: cmake -B build -DGGML_CUDA=ON && cmake --build build -j\n"
         << "     Then:  export ZELVORAN_LLAMA_SERVER=/path/to/llama-server\n";
  }

  const Args& args_;
  Session& session_;
  std::ostream& out_;
};

void cmd_mmc_setup(const Args& args, Session& session) {
  Setup(args, session).run();
}

constexpr std::string_view VARIANTS[] = {"auto", "cpu", "vulkan", "cuda", "metal"};
constexpr Option OPTIONS[] = {
    {.names = "--hf-endpoint", .help = "HuggingFace endpoint mirror (e.g. https://hf-mirror.com)"},
    {.names = "--server-bin",
     .help = "Path to an existing llama.cpp llama-server binary",
     .file = true},
    {.names = "--llama-variant",
     .help = "Prebuilt llama-server variant to install (default: auto)",
     .fallback = "auto",
     .choices = VARIANTS},
    {.names = "--llama-tag", .help = "Pin a llama.cpp release tag (e.g. b10068); default: latest"},
    {.names = "--skip-llama",
     .kind = Kind::flag,
     .help = "Do not auto-install llama-server, only report its status"},
    {.names = "--no-download",
     .kind = Kind::flag,
     .help = "Do not download the model (still sets up llama-server)"},
};

}  // namespace

constinit const Command MMC_SETUP = {
    .name = "mmc-setup",
    .help = "Install local MMC deps and download the on-device VLM model",
    .options = OPTIONS,
    .handler = cmd_mmc_setup};

}  // namespace zv::mmc
