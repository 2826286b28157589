// Walking the command table: what the completions and the manual page say of each command.
#pragma once

#include <string>
#include <vector>

#include "cli/parse.h"

namespace zv::cli {

// Every command with the way to it, the program itself first, each before its sub-commands.
std::vector<CommandPath> command_paths(const Command& program);
// "zv-anpr server start": what is typed to reach it.
std::string typed_path(const CommandPath& path);
// "_server_start": the same as part of a function's name in a shell; empty for the program.
std::string function_suffix(const CommandPath& path);
// The options that the command at the end of the path takes, those that all have first.
std::vector<const Option*> options_at(const CommandPath& path);
// Its first positional, or nullptr.
const Option* positional_at(const CommandPath& path);
bool takes_value(const Option& option);
// "cpu cuda directml"
std::string choice_words(const Option& option);

}  // namespace zv::cli
