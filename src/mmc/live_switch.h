// Tells a running server about the chosen backend, so that it needs no restart.
#pragma once

#include <string>

#include "command/command.h"

namespace zv::mmc {

// Prints what came of it. Whatever fails counts as: no server runs there.
void switch_running_server(const std::string& backend, const Args& args, Session& session);

}  // namespace zv::mmc
