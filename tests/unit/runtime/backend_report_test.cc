#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "runtime/backend.h"

namespace zv::runtime {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

BackendFacts runtime_with(std::vector<std::string> providers) {
  BackendFacts facts;
  facts.runtime_imports = true;
  facts.runtime_version = "1.19.2";
  facts.providers = std::move(providers);
  return facts;
}

std::string report(const BackendFacts& facts, const std::string& system = "Linux") {
  std::ostringstream out;
  print_backend_report(facts, system, out);
  return out.str();
}

TEST(BackendReport, ShowsDirectmlOnWindows) {
  const std::string text = report(runtime_with({"DmlExecutionProvider"}), "Windows");
  EXPECT_THAT(text, HasSubstr("\n✅ DirectML (Windows GPU acceleration)\n"));
  EXPECT_THAT(text, HasSubstr("\nBackends ready: cpu, directml\n"));
  EXPECT_THAT(text, EndsWith("\n💡 Tips:\n"));
}

TEST(BackendReport, AdvisesDirectmlOnWindowsOnly) {
  const std::string text = report(runtime_with({"CPUExecutionProvider"}), "Windows");
  EXPECT_THAT(text, HasSubstr("\n❌ DirectML (Not available on Windows)\n"));
  EXPECT_THAT(text, EndsWith("\n💡 Tips:\n• For DirectML: zv-anpr gpu-setup directml\n"));
  for (const char* system : {"Linux", "Darwin", "windows"}) {
    const std::string elsewhere = report(runtime_with({"DmlExecutionProvider"}), system);
    EXPECT_THAT(elsewhere, HasSubstr("\n⚠️  DirectML (Windows only)\n"));
    EXPECT_THAT(elsewhere, EndsWith("\n💡 Tips:\n"));
  }
}

TEST(BackendReport, CannotCheckDirectmlWithoutARuntime) {
  EXPECT_THAT(report({}, "Windows"), HasSubstr("\n❌ DirectML (Cannot check)\n"));
}

TEST(BackendReport, ListsReadyBackendsInTheirOrder) {
  const auto facts =
      runtime_with({"TensorrtExecutionProvider", "DmlExecutionProvider", "CUDAExecutionProvider"});
  EXPECT_THAT(report(facts, "Windows"),
              HasSubstr("\nBackends ready: cpu, cuda, directml, tensorrt\n"));
}

TEST(BackendReport, PutsAllTipsInOrder) {
  BackendFacts facts;
  facts.conflict = {"Two of them", "directml"};
  EXPECT_THAT(report(facts, "Windows"), EndsWith("\n💡 Tips:\n"
                                                 "• Install onnxruntime: pip install onnxruntime\n"
                                                 "⚠️  Two of them\n"
                                                 "   Fix: zv-anpr gpu-setup directml\n"
                                                 "• For DirectML: zv-anpr gpu-setup directml\n"));
}

TEST(CudaVersionText, ReadsThousandsAndTens) {
  EXPECT_EQ(cuda_version_text(12040), "12.4");
  EXPECT_EQ(cuda_version_text(11080), "11.8");
  EXPECT_EQ(cuda_version_text(12000), "12.0");
}

}  // namespace
}  // namespace zv::runtime
