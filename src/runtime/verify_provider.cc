#include "runtime/verify_provider.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "base/json.h"
#include "base/python_text.h"
#include "base/unicode.h"
#include "runtime/targets.h"

namespace zv::runtime {
namespace {

namespace fs = std::filesystem;

constexpr const char* IMPORT_SCRIPT =
    "import onnxruntime as o; assert o.__version__; print(o.__version__)";
constexpr const char* PROVIDERS_SCRIPT =
    "import json, onnxruntime as o; "
    "print('PROVIDERS_JSON:' + json.dumps(o.get_available_providers()))";
constexpr std::string_view PROVIDERS_MARKER = "PROVIDERS_JSON:";
constexpr const char* CUDA_SCRIPT =
    "import json; from zelvoran_anpr.utils import cuda_runtime_problem; "
    "print('CUDA_PROBLEM:' + json.dumps(cuda_runtime_problem()))";
constexpr std::string_view CUDA_MARKER = "CUDA_PROBLEM:";
constexpr std::size_t LAST_LINE_LENGTH = 160;
constexpr std::size_t PROBLEM_LENGTH = 200;

std::string last_line(std::string_view text) {
  const auto lines = split_lines(strip(text));
  return lines.empty() ? "" : first_characters(lines.back(), LAST_LINE_LENGTH);
}

// The JSON after the marker on the first line that starts with it; other lines are the modules'
// own.
std::optional<Value> marked_value(const std::string& output, std::string_view marker) {
  for (const std::string& line : split_lines(output)) {
    if (line.starts_with(marker)) return parse_json(line.substr(marker.size()));
  }
  return std::nullopt;
}

std::string joined(const List& texts) {
  std::string all;
  for (const Value& text : texts) all += (all.empty() ? "" : ", ") + plain_text(text);
  return all;
}

// The interpreter takes modules from the folder it is started in: this one has none of the user's.
class InFolderOf {
 public:
  explicit InFolderOf(const fs::path& program) : before_(fs::current_path(error_)) {
    std::error_code ignored;
    if (!error_) fs::current_path(program.parent_path(), ignored);
  }
  ~InFolderOf() {
    std::error_code ignored;
    if (!error_) fs::current_path(before_, ignored);
  }
  InFolderOf(const InFolderOf&) = delete;
  InFolderOf& operator=(const InFolderOf&) = delete;

 private:
  std::error_code error_;
  fs::path before_;
};

class Verification {
 public:
  Verification(const std::string& target, Session& session)
      : target_(target),
        provider_(expected_provider(target)),
        session_(session),
        out_(session.out) {}

  void print() {
    out_ << "\n🔍 Verifying...\n";
    if (!read_providers()) return;
    const bool listed =
        std::any_of(providers_.begin(), providers_.end(),
                    [this](const Value& name) { return plain_text(name) == provider_; });
    const Value problem = listed && is_cuda(target_) ? cuda_problem() : nullptr;
    if (listed && truthy(problem)) {
      print_cuda_problem(plain_text(problem));
    } else if (listed) {
      print_available();
    } else {
      print_missing();
    }
    print_use();
  }

 private:
  bool read_providers() {
    const Completed child = run_script(PROVIDERS_SCRIPT, session_);
    const Value found = marked_value(child.out, PROVIDERS_MARKER).value_or(nullptr);
    if (const auto* list = found.as<List>()) providers_ = *list;
    if (!providers_.empty()) return true;
    out_ << "✗ Cannot read providers after install\n";
    const std::string error = last_line(child.err);
    if (!error.empty()) out_ << "   " << error << "\n";
    return false;
  }

  Value cuda_problem() {
    const Completed child = run_script(CUDA_SCRIPT, session_);
    return marked_value(child.out, CUDA_MARKER).value_or("could not check whether CUDA starts");
  }

  void print_cuda_problem(const std::string& problem) {
    out_ << "⚠️  onnxruntime-gpu is installed, but CUDA cannot start:\n"
         << "   " << first_characters(problem, PROBLEM_LENGTH) << "\n"
         << "   Models would run on the CPU. Possible causes:\n"
            "   • the NVIDIA libraries are missing: pip install 'onnxruntime-gpu[cuda,cudnn]'\n"
            "   • the NVIDIA driver is older than this onnxruntime-gpu needs (check: nvidia-smi)\n";
  }

  void print_available() {
    out_ << "✅ " << provider_ << " is available!\n"
         << "   Providers: " << joined(providers_) << "\n";
    if (is_cuda(target_)) out_ << "   GPU ready: onnxruntime starts CUDA\n";
  }

  void print_missing() {
    out_ << "⚠️  " << provider_ << " not found in providers: " << joined(providers_) << "\n";
    if (!is_cuda(target_)) return;
    out_ << "   Possible causes:\n"
            "   • onnxruntime-gpu is not installed: pip install 'onnxruntime-gpu[cuda,cudnn]'\n"
            "   • the NVIDIA driver is missing or too old\n"
            "   Check: nvidia-smi\n";
  }

  void print_use() {
    const std::string backend = is_cuda(target_) ? "cuda" : target_;
    out_ << "\n✅ Done. Use --backend " << backend << " to enable:\n"
         << "   zv-anpr photo.jpg --backend " << backend << "\n"
         << "   zv-anpr server start  (set backend in server_config.yaml)\n";
  }

  const std::string& target_;
  std::string provider_;
  Session& session_;
  std::ostream& out_;
  List providers_;
};

}  // namespace

Completed run_script(const std::string& script, Session& session) {
  const InFolderOf there(session.engine.python());
  return run_captured({session.engine.python(), "-c", script});
}

bool _import_ok(Session& session) {
  const Completed child = run_script(IMPORT_SCRIPT, session);
  if (!child.exit.success()) {
    session.out << "  ✗ " << last_line(child.err.empty() ? child.out : child.err) << "\n";
    return false;
  }
  session.out << "  ✓ onnxruntime " << strip(child.out) << " imports OK\n";
  return true;
}

void _verify_provider(const std::string& target, Session& session) {
  Verification(target, session).print();
}

}  // namespace zv::runtime
