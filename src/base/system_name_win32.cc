#include <cstdlib>

#include "base/system_name.h"

namespace zv {

std::string system_name() {
  return "Windows";
}

std::string machine_name() {
  // The first is set for a 32-bit program on a 64-bit system and names the system's own.
  for (const char* variable : {"PROCESSOR_ARCHITEW6432", "PROCESSOR_ARCHITECTURE"}) {
    if (const char* name = std::getenv(variable)) return name;
  }
  return {};
}

}  // namespace zv
