#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "base/interrupt.h"
#include "base/python_number.h"
#include "base/unicode.h"
#include "command/texts.h"
#include "mmc/commands.h"
#include "python/object.h"

namespace zv::mmc {
namespace {

struct Target {
  const char* label;
  python::Object path;

  bool exists() const {
    std::error_code error;
    return std::filesystem::exists(path.text(), error);
  }
};

struct LocalModule {
  python::Object bin_folder;
  python::Object model_folder;
  python::Object folder_size;
  python::Object remove_server_bin;
  python::Object remove_models;
};

class Removal {
 public:
  Removal(const Args& args, Session& session)
      : session_(session),
        out_(session.out),
        server_(!args.flag("models_only")),
        model_(args.flag("all") || args.flag("models_only")),
        confirmed_(args.flag("yes")) {}

  void run() {
    out_ << "\nZelvoran ANPR — Local MMC Uninstall\n" << std::string(50, '=') << "\n";
    const auto module = load();
    if (!module) return;
    const std::vector<Target> wanted = targets(*module);
    std::vector<Target> existing;
    for (const Target& target : wanted) {
      if (target.exists()) existing.push_back(target);
    }
    if (existing.empty()) {
      print_nothing(wanted);
      return;
    }
    print_sizes(existing, *module);
    if (!confirmed_ && !confirm()) {
      out_ << "Aborted. Nothing was removed.\n";
      return;
    }
    remove(*module);
  }

 private:
  std::optional<LocalModule> load() {
    try {
      Engine& engine = session_.engine;
      return LocalModule{
          engine.load(LOCAL_MODULE, "_BIN_DIR"), engine.load(LOCAL_MODULE, "_MODEL_DIR"),
          engine.load(LOCAL_MODULE, "_dir_size"), engine.load(LOCAL_MODULE, "remove_server_bin"),
          engine.load(LOCAL_MODULE, "remove_models")};
    } catch (const std::exception& error) {
      out_ << "\n✗ Local MMC module unavailable: " << error.what() << "\n";
      return std::nullopt;
    }
  }

  std::vector<Target> targets(const LocalModule& module) const {
    std::vector<Target> wanted;
    if (server_) wanted.push_back({"llama-server binary", module.bin_folder});
    if (model_) wanted.push_back({"on-device VLM model", module.model_folder});
    return wanted;
  }

  void print_nothing(const std::vector<Target>& wanted) {
    out_ << "\nNothing to remove — targets do not exist:\n";
    for (const Target& target : wanted) {
      out_ << "   • " << target.label << ": " << target.path.text() << "\n";
    }
    if (model_) return;
    out_ << "\n(Use --all to also remove the downloaded model, or --models-only to remove just the "
            "model.)\n";
  }

  void print_sizes(const std::vector<Target>& existing, const LocalModule& module) {
    out_ << "\nWill remove:\n";
    Value total = 0;
    for (const Target& target : existing) {
      const Value size = module.folder_size.call({target.path});
      total = sum(total, size);
      const std::string line = target.path.text() + "  (" + _fmt_size(size) + ")\n";
      out_ << "   • " << target.label << ": " << line;
    }
    out_ << "   Total to free: " << _fmt_size(total) << "\n";
  }

  // End of input and Ctrl+C mean no.
  bool confirm() {
    out_ << "\nProceed? [y/N] " << std::flush;
    std::string line;
    if (pending_interrupts() == 0) std::getline(session_.in, line);
    if (take_interrupts() > 0) return false;
    const std::string answer = ascii_lower(strip(line));
    return answer == "y" || answer == "yes";
  }

  void remove(const LocalModule& module) {
    out_ << "\n";
    if (server_) remove_one(module.remove_server_bin, "llama-server binary");
    if (model_) remove_one(module.remove_models, "VLM model");
    out_ << "\n✅ Done.\n";
    if (!model_) {
      out_ << "   (Model kept in ~/.zelvoran/models/vlm — use --all to remove it too.)\n";
    }
    out_ << "   Python deps (e.g. huggingface_hub) were left intact.\n"
            "   Reinstall anytime with: zv-anpr mmc-setup\n";
  }

  void remove_one(const python::Object& operation, const char* label) {
    const python::Object result = operation.make();
    if (!result.item("removed").truthy()) {
      out_ << "   • " << label << ": nothing to remove\n";
      return;
    }
    const std::string freed = _fmt_size(result.item("freed_bytes").value());
    out_ << "   ✓ Removed " << label << " (" << freed << " freed)\n";
  }

  Session& session_;
  std::ostream& out_;
  bool server_;
  bool model_;
  bool confirmed_;
};

void cmd_mmc_uninstall(const Args& args, Session& session) {
  Removal(args, session).run();
}

constexpr Option OPTIONS[] = {
    {.names = "--all",
     .kind = Kind::flag,
     .help = "Also remove the downloaded VLM model (~/.zelvoran/models/vlm)"},
    {.names = "--models-only",
     .kind = Kind::flag,
     .help = "Remove only the VLM model, keep the llama-server binary"},
    {.names = "-y/--yes", .kind = Kind::flag, .help = "Do not prompt for confirmation"},
};

}  // namespace

constinit const Command MMC_UNINSTALL = {
    .name = "mmc-uninstall",
    .help = "Cleanly remove the on-device MMC llama-server and/or model",
    .options = OPTIONS,
    .handler = cmd_mmc_uninstall};

}  // namespace zv::mmc
