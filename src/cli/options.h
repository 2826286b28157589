// Options as they are typed: their names, their values, and the known word nearest to a mistyped
// one.
#pragma once

#include <string>
#include <vector>

#include "command/command.h"

namespace zv::cli {

std::vector<std::string> names_of(const Option& option);
// "PORT", "{cpu,cuda}": what stands for its value.
std::string metavar(const Option& option);
bool takes_value(const Option& option);
bool numeric(const Option& option);

// The options a typed long name can mean: the one it spells, or all that it abbreviates. `--help`
// is among the candidates of every command and `--version` of the program.
struct Candidate {
  std::string name;
  const Option* option;  // nullptr for the options that every parser has
};
std::vector<Candidate> long_candidates(const Command& command, bool top, const std::string& typed);
const Option* short_option(const Command& command, char letter);

// The sentence that names what is wrong with the command line; thrown and caught by the parser.
struct Problem {
  std::string message;
};
// Throws Problem for what is no number, or none of the choices.
Value converted(const Option& option, const std::string& text);
Value default_of(const Option& option);
// "argument --port: ", the start of a sentence about an option.
std::string argument(const Option& option);

std::string joined(const std::vector<std::string>& words, const char* separator);
// " (did you mean 'server'?)", or nothing when no known word is near.
std::string suggestion(const std::string& typed, const std::vector<std::string>& known);

}  // namespace zv::cli
