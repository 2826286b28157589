// The names of the operating system and of the machine, as the engine's language knows them.
#pragma once

#include <string>

namespace zv {

// "Linux", "Darwin", "Windows", ...
std::string system_name();
// "x86_64", "aarch64", "arm64", "AMD64", ...
std::string machine_name();

}  // namespace zv
