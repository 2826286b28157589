// Tells a running server about the chosen backend, so that it needs no restart.
#pragma once

#include <ostream>
#include <string>

#include "command/args.h"

namespace zv::mmc {

// Prints what came of it. Whatever fails counts as: no server runs there.
void switch_running_server(const std::string& backend, const Args& args, std::ostream& out);

}  // namespace zv::mmc
