#include "runtime/targets.h"

#include <gtest/gtest.h>

#include <vector>

namespace zv::runtime {
namespace {

std::string refusal(const char* target, const char* system, const char* machine) {
  const auto [supported, reason] = _gpu_target_supported(target, system, machine);
  EXPECT_EQ(supported, reason.empty());
  return reason;
}

TEST(GpuTargetSupported, RefusesCudaOnMacos) {
  for (const char* target : {"cuda", "gpu"}) {
    for (const char* machine : {"arm64", "x86_64"}) {
      EXPECT_EQ(
          refusal(target, "Darwin", machine),
          "onnxruntime-gpu (CUDA) is not available on macOS. Apple Silicon/Intel Macs use CPU "
          "inference. Run: zv-anpr gpu-setup cpu");
    }
  }
}

TEST(GpuTargetSupported, RefusesCudaOnArmLinuxInAnyCase) {
  for (const char* target : {"cuda", "gpu"}) {
    for (const char* machine : {"aarch64", "arm64", "AArch64"}) {
      EXPECT_EQ(refusal(target, "Linux", machine),
                "onnxruntime-gpu CUDA wheels are x86_64-only. ARM64 Linux must use CPU inference. "
                "Run: zv-anpr gpu-setup cpu");
    }
  }
}

TEST(GpuTargetSupported, RefusesDirectmlOutsideWindowsAndNamesTheSystem) {
  EXPECT_EQ(refusal("directml", "Linux", "x86_64"),
            "onnxruntime-directml is Windows-only (detected: Linux). Run: zv-anpr gpu-setup cpu or "
            "cuda.");
  EXPECT_EQ(
      refusal("directml", "Darwin", "arm64"),
      "onnxruntime-directml is Windows-only (detected: Darwin). Run: zv-anpr gpu-setup cpu or "
      "cuda.");
}

TEST(GpuTargetSupported, TakesAllElse) {
  EXPECT_EQ(refusal("cuda", "Linux", "x86_64"), "");
  EXPECT_EQ(refusal("gpu", "Windows", "AMD64"), "");
  EXPECT_EQ(refusal("cuda", "Windows", "ARM64"), "");
  EXPECT_EQ(refusal("directml", "Windows", "AMD64"), "");
  for (const char* system : {"Linux", "Darwin", "Windows", "FreeBSD"}) {
    EXPECT_EQ(refusal("cpu", system, "aarch64"), "");
  }
}

TEST(Targets, HavePackagesExtrasAndProviders) {
  struct Row {
    const char *target, *package, *requirement, *provider;
  };
  const std::vector<Row> rows = {
      {"cuda", "onnxruntime-gpu", "onnxruntime-gpu[cuda,cudnn]", "CUDAExecutionProvider"},
      {"gpu", "onnxruntime-gpu", "onnxruntime-gpu[cuda,cudnn]", "CUDAExecutionProvider"},
      {"directml", "onnxruntime-directml", "onnxruntime-directml", "DmlExecutionProvider"},
      {"cpu", "onnxruntime", "onnxruntime", "CPUExecutionProvider"},
      {"other", "onnxruntime", "onnxruntime", "CPUExecutionProvider"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(target_package(row.target), row.package);
    EXPECT_EQ(pip_requirement(row.target), row.requirement);
    EXPECT_EQ(expected_provider(row.target), row.provider);
  }
}

}  // namespace
}  // namespace zv::runtime
