#include "runtime/targets.h"

#include <array>

#include "base/unicode.h"

namespace zv::runtime {
namespace {

constexpr std::array<std::string_view, 3> KNOWN_PACKAGES = {"onnxruntime", "onnxruntime-gpu",
                                                            "onnxruntime-directml"};

constexpr const char* NO_CUDA_ON_MACOS =
    "onnxruntime-gpu (CUDA) is not available on macOS. Apple Silicon/Intel Macs use CPU inference. "
    "Run: zv-anpr gpu-setup cpu";
constexpr const char* NO_CUDA_ON_ARM =
    "onnxruntime-gpu CUDA wheels are x86_64-only. ARM64 Linux must use CPU inference. "
    "Run: zv-anpr gpu-setup cpu";

}  // namespace

std::span<const std::string_view> known_packages() {
  return KNOWN_PACKAGES;
}

bool is_cuda(std::string_view target) {
  return target == "cuda" || target == "gpu";
}

std::string target_package(std::string_view target) {
  if (is_cuda(target)) return "onnxruntime-gpu";
  return target == "directml" ? "onnxruntime-directml" : "onnxruntime";
}

std::string pip_requirement(std::string_view target) {
  return target_package(target) + (is_cuda(target) ? "[cuda,cudnn]" : "");
}

std::string expected_provider(std::string_view target) {
  if (is_cuda(target)) return "CUDAExecutionProvider";
  return target == "directml" ? "DmlExecutionProvider" : "CPUExecutionProvider";
}

std::pair<bool, std::string> _gpu_target_supported(std::string_view target,
                                                   const std::string& system,
                                                   const std::string& machine) {
  const std::string architecture = ascii_lower(machine);
  const bool arm = architecture == "aarch64" || architecture == "arm64";
  if (is_cuda(target) && system == "Darwin") return {false, NO_CUDA_ON_MACOS};
  if (is_cuda(target) && system == "Linux" && arm) return {false, NO_CUDA_ON_ARM};
  if (target == "directml" && system != "Windows") {
    return {false, "onnxruntime-directml is Windows-only (detected: " + system +
                       "). Run: zv-anpr gpu-setup cpu or cuda."};
  }
  return {true, ""};
}

}  // namespace zv::runtime
