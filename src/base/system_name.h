// The name of the operating system, as the engine's language knows it.
#pragma once

#include <string>

namespace zv {

// "Linux", "Darwin", "Windows", ...
std::string system_name();

}  // namespace zv
