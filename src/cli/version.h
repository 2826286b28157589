// The version line, and the answer of a command that was retired.
#pragma once

#include <string>

#include "command/command.h"

namespace zv::cli {

// "Zelvoran ANPR CLI v3.2.1"
std::string version_line(Engine& engine);
extern const Command VERSION;
// The grammar no longer has it; whoever calls it learns where to go instead. Ends with status 2.
void cmd_test_api(const Args& args, Session& session);

}  // namespace zv::cli
