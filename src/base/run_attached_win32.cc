#include "base/interrupt.h"
#include "base/run.h"

namespace zv {

// The library puts every child into a job that the system ends with this process.
ExitState run_attached(const std::vector<std::string>& command) {
  using enum Child::Stream;
  check_interrupt();
  Child child(command, {inherit, inherit, inherit}, Relay::unless_from_terminal);
  child.run_until([&] { return child.exit().has_value(); });
  check_interrupt();
  return *child.exit();
}

}  // namespace zv
