// All commands: the program as a record of its own, with the records of the rooms below it.
#pragma once

#include "command/command.h"

namespace zv::cli {

// The program itself: its commands, their options, the text above them.
const Command& program();
// The options that every command has; the program itself has more.
std::span<const Option> common_options(bool top);

extern const Command VERSION;
// "Zelvoran ANPR CLI v3.2.1"
std::string version_line(Engine& engine);
// The grammar no longer has it; whoever calls it learns where to go instead. Ends with status 2.
void cmd_test_api(const Args& args, Session& session);

}  // namespace zv::cli
