#include "base/hangup.h"

namespace zv {

// No signal tells a child here that its console was closed.
std::vector<std::string> with_hangups_as_here(const std::vector<std::string>& command) {
  return command;
}

}  // namespace zv
