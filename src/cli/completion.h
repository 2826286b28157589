// Completion scripts for shells, made from the command table. The bare form, a photo without a
// command, completes as `read` does.
#pragma once

#include <string>

#include "cli/command_table.h"

namespace zv::cli {

// For bash 3.2 and later; needs no other package.
std::string bash_completion(const Command& program);
// An autoloaded function for zsh's completion system.
std::string zsh_completion(const Command& program);
// For fish 3 and later.
std::string fish_completion(const Command& program);

}  // namespace zv::cli
