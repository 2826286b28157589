#include "base/system_name.h"

namespace zv {

std::string system_name() {
  return "Windows";
}

}  // namespace zv
