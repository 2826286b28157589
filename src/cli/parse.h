// From the words of the command line to the record of the chosen command.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "command/command.h"

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

// The short form without a command: `car.jpg` stands for `read car.jpg`. Puts `read` in front of
// the user's words where the first one looks like a path or names an entry of the working
// directory.
std::vector<std::string> with_read(std::vector<std::string> words);

Outcome parse(const Command& program, const std::vector<std::string>& words);

}  // namespace zv::cli
