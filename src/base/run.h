// Runs a program to its end.
#pragma once

#include <string>
#include <vector>

#include "base/child.h"

namespace zv {

struct Completed {
  ExitState exit;
  std::string out;
  std::string err;
};

// Output captured whole, as text: line ends are "\n", bytes that are no UTF-8 become U+FFFD. No
// time limit. Throws Error when the program cannot be started and Interrupted after Ctrl+C (the
// child has ended by then).
Completed run_captured(const std::vector<std::string>& command);
// Output goes straight to ours. The child ends with this process, however this process ends.
ExitState run_attached(const std::vector<std::string>& command);

}  // namespace zv
