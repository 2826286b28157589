// The operating system and machine as the environment's interpreter names them. What can be
// installed depends on the interpreter, which may be built for another machine than the executable.
#pragma once

#include <string>

#include "command/engine.h"

namespace zv::runtime {

// "Linux", "Darwin", "Windows", ...; empty when the interpreter cannot tell.
std::string system_name(Engine& engine);
// "x86_64", "aarch64", "arm64", "AMD64", ...; empty when the interpreter cannot tell.
std::string machine_name(Engine& engine);

}  // namespace zv::runtime
