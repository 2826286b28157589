// What the fuzzer calls; ZV_FUZZ_TARGET names the harness.
#include <cstdint>
#include <cstdlib>

#include "harness.h"

namespace {

const zv::fuzz::Target& chosen() {
  const char* name = std::getenv("ZV_FUZZ_TARGET");
  const auto* target = zv::fuzz::find_target(name ? name : "");
  zv::fuzz::promise(target != nullptr, "ZV_FUZZ_TARGET is the name of a harness");
  return *target;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const zv::fuzz::Target TARGET = chosen();
  TARGET.harness({reinterpret_cast<const char*>(data), size});
  return 0;
}
