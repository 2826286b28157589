#include <array>
#include <utility>

#include "runtime/backend.h"
#include "runtime/commands.h"

namespace zv::runtime {
namespace {

constexpr const char* WINDOWS = "Windows";

class Report {
 public:
  Report(const BackendFacts& facts, const std::string& system, std::ostream& out)
      : facts_(facts), on_windows_(system == WINDOWS), out_(out) {}

  void print() {
    section("\n📊 Image Backend:");
    out_ << "Pillow: " << facts_.pillow.value_or("installed") << "\n";
    section("\n🚀 Model Backend Support (V14–V16):");
    cpu();
    cuda();
    directml();
    tensorrt();
    section("\n📋 Summary:");
    summary();
    tips();
  }

 private:
  enum Backend : std::size_t { CPU, CUDA, DIRECTML, TENSORRT };

  void section(const char* title) { out_ << title << "\n" << std::string(40, '-') << "\n"; }

  void cpu() {
    ready_[CPU].second = facts_.runtime_imports;
    if (!facts_.runtime_imports) {
      out_ << "❌ CPU (ONNX Runtime not installed)\n";
      return;
    }
    const std::string& version = facts_.runtime_version;
    out_ << "✅ CPU (ONNX Runtime" << (version.empty() ? "" : " " + version) << ")\n";
  }

  void cuda() {
    if (!facts_.providers) {
      out_ << "❌ CUDA (Cannot check)\n";
    } else if (!facts_.lists("CUDAExecutionProvider")) {
      out_ << "❌ CUDA (Not available)\n";
    } else {
      ready_[CUDA].second = true;
      const std::string& version = facts_.cuda_version;
      out_ << "✅ CUDA" << (version.empty() ? "" : " (CUDA " + version + ")")
           << " (GPU acceleration available)\n";
    }
  }

  void directml() {
    if (!on_windows_) {
      out_ << "⚠️  DirectML (Windows only)\n";
    } else if (!facts_.providers) {
      out_ << "❌ DirectML (Cannot check)\n";
    } else if (!facts_.lists("DmlExecutionProvider")) {
      out_ << "❌ DirectML (Not available on Windows)\n";
    } else {
      ready_[DIRECTML].second = true;
      out_ << "✅ DirectML (Windows GPU acceleration)\n";
    }
  }

  void tensorrt() {
    if (!facts_.providers) {
      out_ << "❌ TensorRT (Cannot check)\n";
    } else if (facts_.lists("TensorrtExecutionProvider")) {
      ready_[TENSORRT].second = true;
      out_ << "✅ TensorRT " << (facts_.tensorrt ? *facts_.tensorrt + " " : "")
           << "(NVIDIA optimization)\n";
    } else if (facts_.tensorrt) {
      out_ << "   ⚠️  TensorRT " << *facts_.tensorrt << " installed but not in ONNX Runtime\n"
           << "   💡 Install: pip install onnxruntime-gpu\n";
    } else {
      out_ << "❌ TensorRT (Not available)\n";
    }
  }

  void summary() {
    out_ << "Available models: V17\n";
    std::string names;
    for (const auto& [name, usable] : ready_) {
      if (usable) names += (names.empty() ? "" : ", ") + std::string(name);
    }
    if (names.empty()) {
      out_ << "⚠️  No backends available - install onnxruntime\n";
    } else {
      out_ << "Backends ready: " << names << "\n";
    }
  }

  void tips() {
    out_ << "\n💡 Tips:\n";
    if (!ready_[CPU].second) out_ << "• Install onnxruntime: pip install onnxruntime\n";
    if (!facts_.conflict.message.empty()) {
      out_ << "⚠️  " << facts_.conflict.message << "\n"
           << "   Fix: zv-anpr gpu-setup " << facts_.conflict.backend << "\n";
    }
    if (on_windows_ && !ready_[DIRECTML].second) {
      out_ << "• For DirectML: zv-anpr gpu-setup directml\n";
    }
  }

  const BackendFacts& facts_;
  bool on_windows_;
  std::ostream& out_;
  std::array<std::pair<const char*, bool>, 4> ready_ = {
      {{"cpu", false}, {"cuda", false}, {"directml", false}, {"tensorrt", false}}};
};

void cmd_gpu_info(const Args&, Session& session) {
  session.out << "Zelvoran ANPR System Information\n"
              << std::string(50, '=') << "\n"
              << "\n📦 Package Version: " << session.engine.version() << "\n";
  const BackendFacts facts = gather_facts(session.engine);
  print_backend_report(facts, system_name(session.engine), session.out);
}

}  // namespace

void print_backend_report(const BackendFacts& facts, const std::string& system, std::ostream& out) {
  Report(facts, system, out).print();
}

constinit const Command GPU_INFO = {
    .name = "gpu-info", .help = "Display GPU/CUDA information", .handler = cmd_gpu_info};

}  // namespace zv::runtime
