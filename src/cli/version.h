// The version line, and the answer of a command that was retired.
#pragma once

#include <string>

#include "command/session.h"

namespace zv::cli {

// "Zelvoran ANPR CLI v3.2.1"
std::string version_line(Engine& engine);
void cmd_version(const Args& args, Session& session);
// The grammar no longer has it; whoever calls it learns where to go instead. Ends with status 2.
void cmd_test_api(const Args& args, Session& session);

}  // namespace zv::cli
