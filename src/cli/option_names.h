// The names of an option, and finding an option by what was typed.
#pragma once

#include <string>
#include <vector>

#include "cli/command_table.h"

namespace zv::cli {

std::vector<std::string> names_of(const Option& option);
// "--port", "-f/--force": as it is called in messages.
std::string display_name(const Option& option);
// "PORT", "{cpu,cuda}": what stands for its value.
std::string metavar(const Option& option);

// The options a typed long name can mean: the one it spells, or all that it abbreviates. `--help`
// is among the candidates of every command and `--version` of the program.
struct Candidate {
  std::string name;
  const Option* option;  // nullptr for the options that every parser has
};
std::vector<Candidate> long_candidates(const Command& command, bool top, const std::string& typed);
const Option* short_option(const Command& command, char letter);

}  // namespace zv::cli
