// What gpu-setup can switch to: the targets, their packages and providers, and where they exist.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace zv::runtime {

// The packages that install the same module, in the order in which they are removed.
std::span<const std::string_view> known_packages();

// "cuda" and its synonym "gpu".
bool is_cuda(std::string_view target);
std::string target_package(std::string_view target);
// The package with the extras that the target needs.
std::string pip_requirement(std::string_view target);
std::string expected_provider(std::string_view target);

// Whether a system ("Linux") and machine ("x86_64") can have the target, and the reason if not.
std::pair<bool, std::string> _gpu_target_supported(std::string_view target,
                                                   const std::string& system,
                                                   const std::string& machine);

}  // namespace zv::runtime
