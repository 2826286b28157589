// All commands: the program as a record of its own, with the records of the rooms below it.
#pragma once

#include "command/command.h"

namespace zv::cli {

// The program itself: its commands, their options, the text above them.
const Command& program();
// The options that every command has; the program itself has more.
std::span<const Option> common_options(bool top);

}  // namespace zv::cli
