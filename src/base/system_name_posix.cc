#include <sys/utsname.h>

#include "base/system_name.h"

namespace zv {

std::string system_name() {
  utsname name{};
  return uname(&name) == 0 ? name.sysname : "";
}

}  // namespace zv
