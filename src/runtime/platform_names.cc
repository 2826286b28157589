#include "runtime/platform_names.h"

namespace zv::runtime {

std::string system_name(Engine& engine) {
  return engine.load("platform", "system").make().text();
}

std::string machine_name(Engine& engine) {
  return engine.load("platform", "machine").make().text();
}

}  // namespace zv::runtime
