// What is made from the command table: help pages, the manual page, and completion scripts for
// shells, in which the bare form, a photo without a command, completes as `read` does.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/parse.h"

namespace zv::cli {

// "zelvoran-anpr server start"
std::string program_name(const CommandPath& path);
// In the layout that users of sub-command parsers know: "usage: ..." with a line end, and the whole
// page; `width` in columns.
std::string usage(const CommandPath& path, std::size_t width);
std::string help_page(const CommandPath& path, std::size_t width);
// COLUMNS when set, else 80, less the two columns that are left free at the right.
std::size_t help_width();

// For bash 3.2 and later; needs no other package.
std::string bash_completion(const Command& program);
// An autoloaded function for zsh's completion system.
std::string zsh_completion(const Command& program);
// For fish 3 and later.
std::string fish_completion(const Command& program);
// A page for section 1 in the `man` macros.
std::string manual_page(const Command& program, std::string_view version);

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
// "cpu cuda directml"
std::string choice_words(const Option& option);

}  // namespace zv::cli
