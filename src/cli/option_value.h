// From the text that was typed for an option to the option's value.
#pragma once

#include <string>
#include <vector>

#include "cli/command_table.h"

namespace zv::cli {

// The sentence that names what is wrong with the command line; thrown and caught by the parser.
struct Problem {
  std::string message;
};

// Throws Problem for what is no number, or none of the choices.
Value converted(const Option& option, const std::string& text);
Value default_of(const Option& option);
bool numeric(const Option& option);

// "argument --port: ", the start of a sentence about an option.
std::string argument(const Option& option);
std::string joined(const std::vector<std::string>& words, const char* separator);

}  // namespace zv::cli
