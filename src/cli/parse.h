// From the words of the command line to the record of the chosen command.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "cli/command_table.h"

namespace zv::cli {

// The commands from the program down to the one that the words chose.
using CommandPath = std::vector<const Command*>;

struct Parsed {
  Args args;
  const Command* command;  // of the top level; nullptr when none was given
};
struct HelpWanted {
  CommandPath path;
};
struct VersionWanted {};
struct UsageError {
  CommandPath path;
  std::string message;
};
using Outcome = std::variant<Parsed, HelpWanted, VersionWanted, UsageError>;

Outcome parse(const Command& program, const std::vector<std::string>& words);

}  // namespace zv::cli
