// The environment's package installer.
#pragma once

#include <string>
#include <vector>

#include "command/command.h"

namespace zv {

// Runs "<interpreter> -m pip <arguments>" to its end, showing the command, and its error text when
// it fails. True when it succeeded.
bool _pip_run(const std::vector<std::string>& pip_arguments, Session& session);

}  // namespace zv
